// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Decibels.h"
#include "core/foundation/Files.h"
#include "core/foundation/Numbers.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"
#include "tool/AccountText.h"
#include "tool/AnalysisText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/DemoCopy.h"
#include "tool/DemoProof.h"
#include "tool/DemoRig.h"
#include "tool/DemoTake.h"
#include "tool/Listening.h"
#include "tool/ShapeText.h"
#include "tool/SignalWatch.h"
#include "tool/SourcesText.h"
#include "tool/Terminal.h"

#include <QDir>

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

    /// Watches the take until it is so long.
    Result<void> watchUntil(double seconds, SignalWatch& signals)
    {
        for (;;) {
            const auto state = RecorderStateStore::running();
            if (!state) {
                return captureFailure(u"the take ended too early"_s);
            }
            const CaptureStats stats = state->stats.value_or(CaptureStats{});
            Terminal::print(u"  %1  %2 frames, peak %3 dB"_s.arg(Terminal::clockText(stats.seconds()),
                groupedNumber(stats.frames).rightJustified(9), Decibels::text(stats.peakDB())));
            if (stats.seconds() >= seconds) {
                return {};
            }
            if (signals.wait(1s)) {
                return captureFailure(u"interrupted"_s);
            }
        }
    }

    /// Lets the product look for the mix, and shows what it found.
    Result<SourceRef> findTheMix(SignalWatch& signals)
    {
        const Platform platform = makeDesktopPlatform();
        auto found = Listening::find(*platform.audio, signals);
        if (!found) {
            return std::unexpected(found.error());
        }
        const auto pick = found->pick();
        Terminal::print(u"\nListened to everything for %1 seconds. The likeliest to carry the mix comes first:\n"_s.arg(
            QString::number(std::chrono::duration<double>(SourceProbe::usualTime).count())));
        Terminal::print(sourcesText(SourcesView::of(*std::move(found), *platform.audio)).join(u'\n'));
        if (pick != SourceRef::app(QLatin1StringView(DemoRig::appIdentifier))) {
            return captureFailure(
                u"the virtual DJ app plays the mix, but %1 was picked"_s.arg(pick ? pick->descriptor() : u"nothing"_s));
        }
        return *pick;
    }

    Result<RecorderState> record(const SourceRef& source, const QString& path, double seconds, SignalWatch& signals)
    {
        DemoTake take;
        const auto state = take.start(source, path, [&signals] { return signals.stopRequested(); });
        if (!state) {
            return std::unexpected(state.error());
        }
        Terminal::print(
            u"\nRecording %1. The recorder is process %2, and process %3 started it:"_s.arg(state->deviceName)
                .arg(state->pid)
                .arg(take.starterPid()));
        if (auto watched = watchUntil(seconds / 2, signals); !watched) {
            return std::unexpected(watched.error());
        }
        Terminal::print(
            u"Killing process %1 (SIGKILL), as if the window had crashed. The take goes on:"_s.arg(take.starterPid()));
        take.killStarter();
        if (auto watched = watchUntil(seconds, signals); !watched) {
            return std::unexpected(watched.error());
        }
        return DemoTake::stop();
    }

    Result<void> showShape(const QString& path)
    {
        const auto both = TakeAnalysis::analyze(path, {}, TakeOverview::usualSlices, {});
        if (!both) {
            return std::unexpected(both.error());
        }
        Terminal::print(u"  Loudness %1\n"_s.arg(loudnessText(both->analysis)));
        Terminal::print(shapeText(both->overview, both->analysis.seconds, Terminal::columns(),
            Terminal::hasColours() ? ClipMarks::colour : ClipMarks::row));
        return {};
    }

    Result<void> showAccount(const RecorderState& last)
    {
        Terminal::print(u"\nStopped. The account of the take:"_s);
        for (const QString& line : accountText(last)) {
            Terminal::print(line);
        }
        const auto proof = compareWithSet(last.path, DemoRig::sampleRate);
        if (!proof) {
            return std::unexpected(proof.error());
        }
        if (proof->differing > 0 || !last.stats || proof->frames != last.stats->frames) {
            return captureFailure(
                u"%1 of %2 frames are not what was played"_s.arg(proof->differing).arg(proof->frames));
        }
        Terminal::print(u"  Proof    all %1 frames are, bit by bit, what was played from second %2 of the set"_s.arg(
            groupedNumber(proof->frames), QString::number(proof->setSeconds, 'f', 3)));
        return showShape(last.path);
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
        Terminal::printParagraph(u"A private PipeWire graph is up. A virtual DJ app plays a set there, beside an "
                                 "interface that is silent, a microphone in a room, and a virtual cable with noise on "
                                 "it. Nothing of yours is touched."_s,
            0);
        const auto source = findTheMix(signals);
        if (!source) {
            return std::unexpected(source.error());
        }
        const auto last =
            record(*source, QDir(folder).filePath(VantiroPaths::newTakeName(TakeFormat::caf)), seconds, signals);
        if (!last) {
            return std::unexpected(last.error());
        }
        const auto shown = showAccount(*last);
        return shown ? showCopy(last->path, signals) : shown;
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
