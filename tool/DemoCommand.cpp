// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Files.h"
#include "core/recorder/VantiroPaths.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/DemoProof.h"
#include "tool/DemoRig.h"
#include "tool/DemoTake.h"
#include "tool/SignalWatch.h"
#include "tool/Terminal.h"

#include <QDir>

#include <array>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr int usualSeconds = 15;
    constexpr int shortestSeconds = 5;
    constexpr int longestSeconds = 600;

    const QString folderOption = u"--folder"_s;
    const QString secondsOption = u"--seconds"_s;
    // Not for people: the demo starts itself again in these roles.
    const QString starterOption = u"--start-take"_s;
    const QString sourceOption = u"--source"_s;
    const QString appOption = u"--be-the-app"_s;

    QString progress(const RecorderState& state)
    {
        const CaptureStats stats = state.stats.value_or(CaptureStats{});
        return u"%1 %2 frames, peak %3 dB"_s.arg(
            state.deviceName, Terminal::grouped(stats.frames), QString::number(double(stats.peakDB()), 'f', 1));
    }

    using Takes = std::array<DemoTake, 2>;

    /// Watches both takes until they are so long.
    Result<void> watchUntil(double seconds, Takes& takes, SignalWatch& signals)
    {
        for (;;) {
            QStringList parts;
            double shortest = seconds;
            for (DemoTake& take : takes) {
                const auto state = take.state();
                if (!state) {
                    return captureFailure(u"a take ended too early"_s);
                }
                parts << progress(*state);
                shortest = std::min(shortest, state->stats ? state->stats->seconds() : 0);
            }
            Terminal::print(u"  %1   %2"_s.arg(Terminal::clockText(shortest), parts.join(u"   "_s)));
            if (shortest >= seconds) {
                return {};
            }
            if (signals.wait(1s)) {
                return captureFailure(u"interrupted"_s);
            }
        }
    }

    Result<void> record(Takes& takes, double seconds, SignalWatch& signals)
    {
        for (DemoTake& take : takes) {
            const auto state = take.start([&signals] { return signals.stopRequested(); });
            if (!state) {
                return std::unexpected(state.error());
            }
            Terminal::print(u"Recording %1 (recorder %2, started by %3)."_s.arg(state->deviceName)
                    .arg(state->pid)
                    .arg(take.starterPid()));
        }
        if (auto watched = watchUntil(seconds / 2, takes, signals); !watched) {
            return watched;
        }
        for (DemoTake& take : takes) {
            take.killStarter();
        }
        Terminal::print(u"Killed the programs that started the takes (SIGKILL). The takes go on:"_s);
        return watchUntil(seconds, takes, signals);
    }

    Result<void> showAccount(DemoTake& take)
    {
        const auto last = take.stop();
        if (!last) {
            return std::unexpected(last.error());
        }
        Terminal::print(u"Stopped %1. The account of the take:"_s.arg(last->deviceName));
        for (const QString& line : accountText(*last)) {
            Terminal::print(line);
        }
        const auto proof = compareWithSet(last->path, DemoRig::sampleRate);
        if (!proof) {
            return std::unexpected(proof.error());
        }
        if (proof->differing > 0 || !last->stats || proof->frames != last->stats->frames) {
            return captureFailure(
                u"%1 of %2 frames are not what was played"_s.arg(proof->differing).arg(proof->frames));
        }
        Terminal::print(u"  Proof    all %1 frames are, bit by bit, what was played from second %2 of the set"_s.arg(
            Terminal::grouped(proof->frames), QString::number(proof->setSeconds, 'f', 3)));
        return {};
    }

    Result<void> runDemo(const QString& folder, int seconds)
    {
        SignalWatch signals;
        if (auto made = files::makeFolder(folder); !made) {
            return made;
        }
        const auto rig = DemoRig::make();
        if (!rig) {
            return std::unexpected(rig.error());
        }
        Terminal::print(u"A private PipeWire graph is up; this is what there is to record from:"_s);
        if (sourcesCommand({}) != Terminal::done) {
            return captureFailure(u"the private graph does not answer"_s);
        }
        const QString name = VantiroPaths::newTakeName(TakeFormat::caf);
        Takes takes{DemoTake(SourceRef::device(QLatin1StringView(DemoRig::interfaceName)), (*rig)->dataHome(u"data"_s),
                        QDir(folder).filePath(u"interface-"_s + name)),
            DemoTake(SourceRef::app(QLatin1StringView(DemoRig::appIdentifier)),
                (*rig)->dataHome(u"data-of-a-second-recorder"_s), QDir(folder).filePath(u"app-"_s + name))};
        if (auto recorded = record(takes, seconds, signals); !recorded) {
            return recorded;
        }
        for (DemoTake& take : takes) {
            if (auto shown = showAccount(take); !shown) {
                return shown;
            }
        }
        return {};
    }

}  // namespace

int demoCommand(const QStringList& words)
{
    const auto arguments =
        Arguments::parse(words, {folderOption, secondsOption, starterOption, sourceOption, appOption}, {});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    if (const auto socket = arguments->value(appOption)) {
        return DemoRig::beTheApp(*socket);
    }
    if (const auto output = arguments->value(starterOption)) {
        return DemoTake::beTheStarter(
            SourceRef::fromDescriptor(arguments->value(sourceOption).value_or(QString())), *output);
    }
    bool valid = true;
    const auto length = arguments->value(secondsOption);
    const int seconds = length ? length->toInt(&valid) : usualSeconds;
    if (!valid || seconds < shortestSeconds || seconds > longestSeconds) {
        return Terminal::misuse(u"--seconds takes a number from 5 to 600"_s);
    }
    const QString folder = QDir(arguments->value(folderOption).value_or(u"vantiro-demo"_s)).absolutePath();
    const auto result = runDemo(folder, seconds);
    return result ? Terminal::done : Terminal::fail(errorText(result.error()));
}

}  // namespace vantiro
