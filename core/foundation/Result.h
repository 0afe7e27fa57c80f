// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Error.h"

#include <expected>

namespace vantiro {

/// A value, or the reason why there is none.
template <class Value>
using Result = std::expected<Value, Error>;

/// The failing side of a Result, with a finished sentence or fragment.
[[nodiscard]] inline std::unexpected<Error> captureFailure(QString description)
{
    return std::unexpected<Error>(CaptureError{std::move(description)});
}

}  // namespace vantiro
