// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <optional>

namespace vantiro {

/// The application's icon as PNG, 1000 by 1000 pixels, for the cover of copies; nothing where the program is built
/// without one. Any thread.
[[nodiscard]] std::optional<QByteArray> coverArt();

}  // namespace vantiro
