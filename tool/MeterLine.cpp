// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/MeterLine.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Numbers.h"
#include "tool/Terminal.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    constexpr int barWidth = 18;
    constexpr float barBottomDB = -54;
    constexpr float clipMagnitude = 0.999F;
    /// Linear factor from one line to the next: 12 dB a second.
    constexpr float fall = 0.871F;

    QString bar(float magnitude)
    {
        const float part = std::clamp(1.0F - decibels(magnitude) / barBottomDB, 0.0F, 1.0F);
        const int lit = static_cast<int>(std::lround(part * barWidth));
        return QString(lit, QChar(0x2588)) + QString(barWidth - lit, QChar(0x00B7));
    }

    QString level(float magnitude)
    {
        return QStringLiteral("%1").arg(double(decibels(magnitude)), 6, 'f', 1);
    }

    QString roomText(double seconds)
    {
        const auto minutes = static_cast<qint64>(seconds / 60);
        return minutes < 60 ? QStringLiteral("room for %1 min").arg(minutes)
                            : QStringLiteral("room for %1 h").arg(groupedNumber(minutes / 60));
    }

}  // namespace

QString MeterLine::next(std::pair<float, float> peaks, double seconds, std::optional<std::int64_t> freeBytes)
{
    m_left = std::max(peaks.first, m_left * fall);
    m_right = std::max(peaks.second, m_right * fall);
    m_hold = std::max({m_hold, peaks.first, peaks.second});
    m_clipped = m_clipped || m_hold >= clipMagnitude;
    const QString room =
        freeBytes && m_bytesPerSecond > 0 ? roomText(static_cast<double>(*freeBytes) / m_bytesPerSecond) : QString();
    return QStringLiteral("REC %1  L %2 R %3  %4 dB  peak %5 dB  %6 %7")
        .arg(Terminal::clockText(seconds), bar(m_left), bar(m_right), level(std::max(m_left, m_right)), level(m_hold),
            m_clipped ? QStringLiteral("CLIP") : QStringLiteral("    "), room);
}

}  // namespace vantiro
