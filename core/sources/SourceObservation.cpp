// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceObservation.h"

#include <algorithm>
#include <array>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    constexpr std::array microphoneTransports{
        "built-in"_L1, "bluetooth"_L1, "continuity"_L1, "airplay"_L1, "display"_L1};
    constexpr std::array microphoneWords{"microphone"_L1, "webcam"_L1, "camera"_L1, "headset"_L1, "airpods"_L1};

    bool namesMicrophone(const QString& name)
    {
        const QString lower = name.toLower();
        return std::ranges::any_of(microphoneWords, [&lower](QLatin1StringView word) { return lower.contains(word); })
            || lower.endsWith(" mic"_L1);
    }

}  // namespace

bool SourceObservation::isMicrophone() const
{
    // A virtual device may call itself anything.
    if (ref.kind != SourceRef::Kind::device || transport == "virtual"_L1) {
        return false;
    }
    return inputTerminal == "microphone"_L1
        || std::ranges::find(microphoneTransports, transport) != microphoneTransports.end() || namesMicrophone(name);
}

}  // namespace vantiro
