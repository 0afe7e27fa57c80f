// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Figures.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Numbers.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace vantiro::Figures {

namespace {

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(Figures)
    };

    /// For the choice between one and many.
    int count(std::int64_t number)
    {
        return static_cast<int>(std::min<std::int64_t>(number, std::numeric_limits<int>::max()));
    }

    /// What never came, and what came and found no room. How long a block was that could not be read is not known.
    QString lost(const CaptureStats& stats)
    {
        const std::int64_t frames = stats.lostFrames + stats.overflowFrames;
        if (frames > 0) {
            return Words::tr("%1 frames", nullptr, count(frames)).arg(groupedNumber(frames));
        }
        const std::int64_t blocks = stats.droppedCallbacks.value_or(0);
        if (blocks > 0) {
            return Words::tr("%1 blocks", nullptr, count(blocks)).arg(groupedNumber(blocks));
        }
        return Words::tr("nothing");
    }

    QString drift(double percent)
    {
        const QString text = QString::asprintf("%+.4f%%", percent);
        return text == QLatin1StringView("-0.0000%") ? QStringLiteral("+0.0000%") : text;
    }

}  // namespace

QString withMinus(QString text)
{
    static const QRegularExpression minus(
        QStringLiteral("(?<![\\w-])-(?=\\d)"), QRegularExpression::UseUnicodePropertiesOption);
    return text.replace(minus, QString(QChar(0x2212)));
}

QStringList ofTake(const CaptureStats& stats)
{
    const QString audio = Words::tr("%1 frames in %2 gaps", nullptr, count(stats.discontinuities))
                              .arg(groupedNumber(stats.frames), groupedNumber(stats.discontinuities));
    return {audio, lost(stats), groupedNumber(stats.writeErrors.value_or(0)),
        withMinus(drift(stats.deviationPercent())), withMinus(Words::tr("%1 dB").arg(Decibels::text(stats.peakDB())))};
}

}  // namespace vantiro::Figures
