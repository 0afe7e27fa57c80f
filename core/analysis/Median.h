// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

namespace vantiro {

/// The upper one of the middle two if the count is even. The values are not empty. Any thread.
template <class Number>
[[nodiscard]] Number upperMedian(std::vector<Number> values)
{
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

}  // namespace vantiro
