// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/EndingWords.h"

#include <QCoreApplication>

#include <algorithm>
#include <limits>

namespace vantiro::EndingWords {

namespace {

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(EndingWords)
    };

    /// What the recorder's word for its reason to end says; nothing for an unknown word.
    std::optional<QString> causeSentence(const QString& cause, const QString& name)
    {
        if (cause == QLatin1StringView("disk-full")) {
            return Words::tr("The disk ran out of space. Vantiro closed the take while it was still whole. Free some "
                             "space, or choose another takes folder in Settings.");
        }
        if (cause == QLatin1StringView("source-quit")) {
            return Words::tr("%1 quit, so the take ends there. The file is intact.").arg(name);
        }
        if (cause == QLatin1StringView("device-lost")) {
            return Words::tr("%1 was disconnected. The take ends where the device left, and the file is intact.")
                .arg(name);
        }
        if (cause == QLatin1StringView("rate-changed")) {
            return Words::tr("The sample rate of %1 changed, so Vantiro ended the take there. The file plays at the "
                             "right speed. Start a new take to keep recording.")
                .arg(name);
        }
        if (cause == QLatin1StringView("input-stalled")) {
            return Words::tr("%1 stopped sending audio, so Vantiro ended the take where the audio stopped. Check the "
                             "cable or the DJ app, then start a new take.")
                .arg(name);
        }
        if (cause == QLatin1StringView("wav-limit")) {
            return Words::tr("The WAV take reached its 4 GB limit, so Vantiro closed it while it was still whole. CAF, "
                             "the default format, has no limit.");
        }
        return std::nullopt;
    }

}  // namespace

std::optional<QString> sentence(const RecorderState& last)
{
    if (last.stats && last.stats->writeFailed()) {
        return Words::tr("Part of this take did not reach the disk, so the file is shorter than your mix. Check the "
                         "disk that holds the takes folder.");
    }
    if (auto text = last.endedBecause ? causeSentence(*last.endedBecause, last.deviceName) : std::nullopt) {
        return text;
    }
    const std::int64_t gaps = last.stats ? last.stats->discontinuities : 0;
    if (gaps < 1) {
        return std::nullopt;
    }
    const int count = static_cast<int>(std::min<std::int64_t>(gaps, std::numeric_limits<int>::max()));
    return Words::tr(
        "The take has %n gaps, for example where the Mac slept. The rest of the file is intact.", nullptr, count);
}

std::optional<QString> sentence(const QString& path, const std::optional<RecorderState>& last)
{
    if (!last || last->path != path) {
        return Words::tr("The recorder stopped unexpectedly. The take up to that moment is in your takes folder.");
    }
    return sentence(*last);
}

}  // namespace vantiro::EndingWords
