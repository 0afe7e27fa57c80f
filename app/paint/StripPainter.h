// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QSizeF>

#include <span>

namespace vantiro {

/// The level history as bars around a middle line, the newest at the right. A bar is a whole number of device pixels
/// wide, so that the picture moves on without shimmering: what of a long history does not fit stays out.
class StripPainter {
public:
    /// The picture of `history`, in dB and oldest first, at `ratio` device pixels a point. Transparent between the
    /// bars. Null for an empty size.
    [[nodiscard]] QImage picture(QSizeF size, std::span<const float> history, double ratio);

private:
    QImage m_ground;  ///< The lines at fixed levels, without bars.
};

}  // namespace vantiro
