// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Decibels.h"
#include "core/foundation/Files.h"
#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/DemoProof.h"
#include "tool/DemoRig.h"
#include "tool/SignalWatch.h"
#include "tool/Terminal.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

#include <csignal>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr auto startLimit = 15s;
    constexpr auto stopLimit = 15s;
    constexpr auto lookEvery = 20ms;
    constexpr int usualSeconds = 15;
    constexpr int shortestSeconds = 5;
    constexpr int longestSeconds = 600;

    const QString startFlag = u"--start-take"_s;

    /// What the window does: starts the recorder through the client, and then sits there until it is killed.
    int beTheStarter(const QString& output)
    {
        const auto state = RecorderClient::start(
            {.source = SourceRef::device(QLatin1StringView(DemoRig::interfaceName)), .output = output});
        if (!state) {
            return Terminal::fail(errorText(state.error()));
        }
        for (;;) {
            ::pause();
        }
    }

    std::optional<RecorderState> waitForTake(QProcess& starter, SignalWatch& signals)
    {
        for (auto waited = 0ms; waited < startLimit && !signals.wait(lookEvery); waited += lookEvery) {
            if (auto state = RecorderStateStore::running()) {
                return state;
            }
            // Asking brings its state up to date.
            if (starter.waitForFinished(0) || starter.state() == QProcess::NotRunning) {
                break;
            }
        }
        return std::nullopt;
    }

    QString progress(const RecorderState& state)
    {
        const CaptureStats stats = state.stats.value_or(CaptureStats{});
        return u"  %1  %2 frames, peak %3 dB, %4 gaps"_s.arg(Terminal::clockText(stats.seconds()),
            Terminal::grouped(stats.frames), QString::number(double(stats.peakDB()), 'f', 1),
            QString::number(stats.discontinuities));
    }

    /// Watches the take until it is so long; false if it ended, or somebody wants to stop.
    bool watchUntil(double seconds, SignalWatch& signals)
    {
        for (;;) {
            const auto state = RecorderStateStore::running();
            if (!state || signals.wait(1s)) {
                return false;
            }
            Terminal::print(progress(*state));
            if (state->stats && state->stats->seconds() >= seconds - 1) {
                return true;
            }
        }
    }

    Result<void> recordSet(const QString& take, double seconds, SignalWatch& signals)
    {
        QProcess starter;
        starter.setProcessChannelMode(QProcess::ForwardedChannels);
        starter.start(QCoreApplication::applicationFilePath(), {u"demo"_s, startFlag, take});
        const auto state = waitForTake(starter, signals);
        if (!state) {
            return captureFailure(u"the take did not start; %1"_s.arg(
                QString::fromUtf8(files::read(VantiroPaths::recorderLog()).value_or(QByteArray())).trimmed()));
        }
        Terminal::print(u"Recording %1 (recorder %2, started by %3)."_s.arg(state->deviceName)
                .arg(state->pid)
                .arg(starter.processId()));
        const bool half = watchUntil(seconds / 2, signals);
        starter.kill();
        starter.waitForFinished();
        if (!half) {
            return captureFailure(u"the take ended too early"_s);
        }
        Terminal::print(u"Killed the program that started the take (SIGKILL). The take goes on:"_s);
        return watchUntil(seconds, signals) ? Result<void>{} : captureFailure(u"the take ended too early"_s);
    }

    int showProof(const RecorderState& last)
    {
        const auto proof = compareWithSet(last.path, DemoRig::sampleRate);
        if (!proof) {
            return Terminal::fail(errorText(proof.error()));
        }
        if (proof->differing > 0 || proof->frames != last.stats->frames) {
            return Terminal::fail(
                u"%1 of %2 frames are not what was played"_s.arg(proof->differing).arg(proof->frames));
        }
        Terminal::print(
            u"  Proof    all %1 frames are, bit by bit, what the interface played from second %2 of the set"_s.arg(
                Terminal::grouped(proof->frames), QString::number(proof->setSeconds, 'f', 3)));
        return Terminal::done;
    }

    int runDemo(const QString& folder, int seconds)
    {
        SignalWatch signals;
        if (auto made = files::makeFolder(folder); !made) {
            return Terminal::fail(errorText(made.error()));
        }
        const auto rig = DemoRig::make();
        if (!rig) {
            return Terminal::fail(errorText(rig.error()));
        }
        Terminal::print(u"A private PipeWire graph is up; this is what there is to record from:"_s);
        if (const int status = sourcesCommand({}); status != Terminal::done) {
            return status;
        }
        const QString take = QDir(folder).filePath(VantiroPaths::newTakeName(TakeFormat::caf));
        const auto recorded = recordSet(take, seconds, signals);
        const auto last = RecorderClient::stop(stopLimit);
        if (!recorded) {
            return Terminal::fail(errorText(recorded.error()));
        }
        if (!last || !*last) {
            return Terminal::fail(last ? u"the recorder left no account"_s : errorText(last.error()));
        }
        Terminal::print(u"Stopped. The account of the take:"_s);
        for (const QString& line : accountText(**last)) {
            Terminal::print(line);
        }
        return showProof(**last);
    }

}  // namespace

int demoCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {u"--folder"_s, u"--seconds"_s, startFlag}, {});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    if (const auto output = arguments->value(startFlag)) {
        return beTheStarter(*output);
    }
    bool valid = true;
    const auto length = arguments->value(u"--seconds"_s);
    const int seconds = length ? length->toInt(&valid) : usualSeconds;
    if (!valid || seconds < shortestSeconds || seconds > longestSeconds) {
        return Terminal::misuse(u"--seconds takes a number from 5 to 600"_s);
    }
    return runDemo(QDir(arguments->value(u"--folder"_s).value_or(u"vantiro-demo"_s)).absolutePath(), seconds);
}

}  // namespace vantiro
