// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <utility>

namespace vantiro {

/// The meter of a take in a terminal: one line with both levels, the highest peak so far, a clip mark, the elapsed time
/// and the time that the disk has room for.
class MeterLine {
public:
    /// `bytesPerSecond` of the take as it is written.
    explicit MeterLine(double bytesPerSecond) : m_bytesPerSecond(bytesPerSecond) { }

    /// The line for peaks (linear) since the last one, about ten times a second.
    [[nodiscard]] QString next(std::pair<float, float> peaks, double seconds, std::optional<std::int64_t> freeBytes);

private:
    double m_bytesPerSecond;
    float m_left = 0;  ///< The bars fall slowly, so that a beat can be seen.
    float m_right = 0;
    float m_hold = 0;
    bool m_clipped = false;
};

}  // namespace vantiro
