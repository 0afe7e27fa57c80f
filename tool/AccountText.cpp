// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/AccountText.h"

#include "core/foundation/Numbers.h"
#include "tool/Terminal.h"

namespace vantiro {

namespace {

    QString row(const QString& title, const QString& content)
    {
        return QStringLiteral("  %1 %2").arg(title, -8).arg(content);
    }

    QString channelText(const std::vector<std::int64_t>& channels)
    {
        QStringList numbers;
        for (const std::int64_t channel : channels) {
            numbers << QString::number(channel);
        }
        return QStringLiteral("%1 %2").arg(
            channels.size() == 1 ? QStringLiteral("channel") : QStringLiteral("channels"),
            numbers.join(QStringLiteral(", ")));
    }

    QString gapText(const CaptureStats& stats)
    {
        if (stats.discontinuities == 0) {
            return stats.clockChecked.value_or(false) ? QStringLiteral("none") : QStringLiteral("not known");
        }
        return QStringLiteral("%1, %2 frames lost")
            .arg(groupedNumber(stats.discontinuities), groupedNumber(stats.lostFrames));
    }

    QString diskText(const CaptureStats& stats)
    {
        if (!stats.fileFrames) {
            return stats.writeErrors.value_or(0) == 0 ? QStringLiteral("no failed writes")
                                                      : QStringLiteral("%1 failed writes").arg(*stats.writeErrors);
        }
        return stats.writeFailed()
            ? QStringLiteral("%1 frames are missing").arg(groupedNumber(stats.missingFrames().value_or(0)))
            : QStringLiteral("every frame is in the file");
    }

}  // namespace

QStringList accountText(const RecorderState& state)
{
    QStringList lines{row(QStringLiteral("Take"), state.path),
        row(QStringLiteral("Source"), QStringLiteral("%1, %2").arg(state.deviceName, channelText(state.channels)))};
    if (const auto& stats = state.stats) {
        lines << row(QStringLiteral("Length"),
            QStringLiteral("%1 (%2 frames at %3 Hz)")
                .arg(Terminal::clockText(stats->seconds()), groupedNumber(stats->frames))
                .arg(stats->sampleRate))
              << row(QStringLiteral("Peak"), QStringLiteral("%1 dB").arg(double(stats->peakDB()), 0, 'f', 1))
              << row(QStringLiteral("Gaps"), gapText(*stats)) << row(QStringLiteral("Disk"), diskText(*stats))
              << row(QStringLiteral("Clock"),
                     QStringLiteral("%1 % against the computer's").arg(stats->deviationPercent(), 0, 'f', 4));
    }
    if (state.endedBecause) {
        lines << row(QStringLiteral("Ended"), *state.endedBecause);
    }
    return lines;
}

}  // namespace vantiro
