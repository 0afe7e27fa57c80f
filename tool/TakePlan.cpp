// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/TakePlan.h"

#include "core/foundation/Json.h"
#include "core/foundation/SettingsStore.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/TakesFolder.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/ChannelPair.h"
#include "core/sources/PreflightFacts.h"
#include "tool/Listening.h"

#include <QDir>

#include <algorithm>

namespace vantiro::TakePlan {

using namespace Qt::StringLiterals;

Result<RankedSource> findSource(AudioPlatform& audio, SignalWatch& signals)
{
    // Nobody should wait for what cannot begin.
    if (const auto running = RecorderStateStore::running()) {
        return captureFailure(u"already recording: %1"_s.arg(running->path));
    }
    const auto found = Listening::find(audio, signals);
    if (!found) {
        return std::unexpected(found.error());
    }
    const auto pick = found->pick();
    const auto source = std::ranges::find_if(
        found->sources, [&pick](const RankedSource& ranked) { return pick == ranked.observation.ref; });
    if (source == found->sources.end()) {
        return captureFailure(u"Nothing that is sure to carry your mix was found: connect an audio interface, a "
                              "mixer or a controller, start a DJ app, or name what 'vantiro sources' lists."_s);
    }
    return *source;
}

std::optional<std::vector<std::int64_t>> chosenChannels(AudioPlatform& audio, const SourceRef& source)
{
    const SettingsStore settings(VantiroPaths::settingsFile(), {}, SettingsStore::BrokenFile::leave);
    const auto first = json::integer(settings.value(u"firstChannel"_s).toObject().value(source.id));
    const auto device = audio.device(source.id);
    return channelPair(source, first.value_or(1), device ? device->inputChannels : 0);
}

Result<QString> pathInTakesFolder(TakeFormat format)
{
    const QString folder = TakesFolder::current();
    if (const auto disk = PreflightFacts::volume(folder).missingVolume) {
        return captureFailure(
            u"%1 is not connected, and the takes folder is on it. Connect it, or name a file with --out."_s.arg(*disk));
    }
    return QDir(folder).filePath(VantiroPaths::newTakeName(format));
}

}  // namespace vantiro::TakePlan
