// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/SettingsStore.h"
#include "core/recorder/EndingWords.h"
#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"
#include "platform/desktop/RunningApplication.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/SignalWatch.h"
#include "tool/TakePlan.h"
#include "tool/Terminal.h"

#include <optional>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;
    using Answer = RunningApplication::Answer;

    constexpr auto windowPatience = 10s;
    constexpr auto savingLimit = 15s;

    Answer askWindow()
    {
        const Bus bus = RunningApplication::session();
        return bus ? RunningApplication::act(bus, RunningApplication::toggleAction, windowPatience) : Answer::absent;
    }

    Result<RecorderState> startTake()
    {
        std::optional<SignalWatch> signals(std::in_place);
        const Platform platform = makeDesktopPlatform();
        const auto source = TakePlan::findSource(*platform.audio, *signals);
        // A stop ends what follows as it ends any program.
        signals.reset();
        if (!source) {
            return std::unexpected(source.error());
        }
        const SettingsStore settings(VantiroPaths::settingsFile(), {}, SettingsStore::BrokenFile::leave);
        const TakeFormat format = settings.value(u"format"_s) == u"wav"_s ? TakeFormat::wav : TakeFormat::caf;
        const auto path = TakePlan::pathInTakesFolder(format);
        if (!path) {
            return std::unexpected(path.error());
        }
        const SourceRef& ref = source->observation.ref;
        return RecorderClient::start({.source = ref,
            .channels = TakePlan::chosenChannels(*platform.audio, ref),
            .format = format,
            .output = *path});
    }

    int stopTake(const RecorderState& running)
    {
        const auto last = RecorderClient::stop(savingLimit);
        if (!last) {
            return Terminal::fail(errorText(last.error()));
        }
        if (!*last || ((*last)->stats && (*last)->stats->writeFailed())) {
            return Terminal::fail(EndingWords::sentence(running.path, *last).value_or(QString()));
        }
        const double seconds = (*last)->stats ? (*last)->stats->seconds() : 0;
        Terminal::print(u"Ended the take after %1: %2"_s.arg(Terminal::clockText(seconds), running.path));
        return Terminal::done;
    }

}  // namespace

int toggleCommand(const QStringList& words)
{
    if (const auto arguments = Arguments::parse(words, {}, {}); !arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const auto running = RecorderStateStore::running();
    switch (askWindow()) {
    case Answer::done:
        Terminal::print(
            running ? u"Asked Vantiro's window to stop the take."_s : u"Asked Vantiro's window to start a take."_s);
        return Terminal::done;
    case Answer::silent:
        return Terminal::fail(u"Vantiro's window does not answer."_s);
    case Answer::absent:
        break;
    }
    if (running) {
        return stopTake(*running);
    }
    const auto started = startTake();
    if (!started) {
        return Terminal::fail(errorText(started.error()));
    }
    Terminal::print(u"Recording %1 to %2"_s.arg(started->deviceName, started->path));
    return Terminal::done;
}

}  // namespace vantiro
