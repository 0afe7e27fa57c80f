// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Log.h"
#include "core/recorder/EndingWords.h"
#include "core/recorder/TakeRecorder.h"
#include "platform/DesktopPlatform.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/MeterLine.h"
#include "tool/SignalWatch.h"
#include "tool/SourcesText.h"
#include "tool/TakePlan.h"
#include "tool/Terminal.h"

#include <QFileInfo>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr auto tickEvery = 100ms;
    constexpr int bytesPerSample = 3;

    enum class Manner {
        foreground,
        detached,
    };

    struct WantedTake {
        TakeRecorder::Request request;
        bool isSourceNamed = false;
        Manner manner = Manner::foreground;
        bool asJson = false;
    };

    Result<std::vector<std::int64_t>> channelList(const QString& text)
    {
        std::vector<std::int64_t> channels;
        const QStringList words = text.isEmpty() ? QStringList() : text.split(u',');
        for (const QString& word : words) {
            bool valid = false;
            channels.push_back(word.toLongLong(&valid));
            if (!valid) {
                return captureFailure(u"--channels takes numbers with commas between them, such as 3,4"_s);
            }
        }
        return channels;
    }

    Result<WantedTake> parseTake(const QStringList& words)
    {
        const auto arguments =
            Arguments::parse(words, {u"--device"_s, u"--app"_s, u"--channels"_s, u"--format"_s, u"--out"_s},
                {u"--detached"_s, u"--force"_s, u"--json"_s});
        if (!arguments) {
            return std::unexpected(arguments.error());
        }
        WantedTake wanted;
        wanted.manner = arguments->has(u"--detached"_s) ? Manner::detached : Manner::foreground;
        wanted.asJson = arguments->has(u"--json"_s);
        const auto source = arguments->source();
        if (!source) {
            return std::unexpected(source.error());
        }
        if (!*source && wanted.manner == Manner::detached) {
            return captureFailure(
                u"--detached needs a source: --device UID or --app ID ('vantiro sources' lists them)"_s);
        }
        wanted.isSourceNamed = source->has_value();
        wanted.request.source = source->value_or(SourceRef{});
        if (const auto channels = arguments->value(u"--channels"_s)) {
            auto list = channelList(*channels);
            if (!list) {
                return std::unexpected(list.error());
            }
            wanted.request.channels = *std::move(list);
        }
        const auto out = arguments->value(u"--out"_s);
        const auto formatWord = arguments->value(u"--format"_s);
        // Whoever names a file ending in .wav wants a WAV file.
        const QString ending = out ? QFileInfo(*out).suffix().toLower() : QString();
        const auto format = formatWord ? takeFormat(*formatWord) : takeFormat(ending).value_or(TakeFormat::caf);
        if (!format) {
            return captureFailure(u"--format takes caf or wav"_s);
        }
        wanted.request.format = *format;
        if (out) {
            wanted.request.output = QFileInfo(*out).absoluteFilePath();
        }
        const bool refuse = wanted.manner == Manner::foreground && !arguments->has(u"--force"_s);
        wanted.request.existing = refuse ? TakeRecorder::ExistingFile::refuse : TakeRecorder::ExistingFile::rename;
        return wanted;
    }

    /// Fills in what the call left open.
    Result<void> complete(WantedTake& wanted, AudioPlatform& audio, SignalWatch& signals)
    {
        if (!wanted.isSourceNamed) {
            const auto source = TakePlan::findSource(audio, signals);
            if (!source) {
                return std::unexpected(source.error());
            }
            if (!wanted.asJson) {
                const QString reasons = source->reasons.isEmpty() ? QString() : u": "_s + reasonsText(*source);
                Terminal::print(u"Found %1%2."_s.arg(source->observation.name, reasons));
            }
            wanted.request.source = source->observation.ref;
        }
        if (!wanted.request.channels && wanted.manner == Manner::foreground) {
            wanted.request.channels = TakePlan::chosenChannels(audio, wanted.request.source);
        }
        if (!wanted.request.output) {
            auto path = TakePlan::pathInTakesFolder(wanted.request.format);
            if (!path) {
                return std::unexpected(path.error());
            }
            wanted.request.output = *std::move(path);
        }
        return {};
    }

    TakeEnding runDetached(TakeRecorder& recorder, SignalWatch& signals)
    {
        while (!signals.wait(tickEvery)) {
            if (const auto ending = recorder.tick()) {
                return *ending;
            }
        }
        return TakeEnding::stopped;
    }

    TakeEnding runWithMeter(TakeRecorder& recorder, SignalWatch& signals)
    {
        Capture& capture = recorder.source().capture();
        MeterLine meter(capture.sampleRate() * static_cast<double>(capture.channels().size()) * bytesPerSample);
        while (!signals.wait(tickEvery)) {
            if (const auto ending = recorder.tick()) {
                return *ending;
            }
            Terminal::rewriteLine(meter.next(capture.takeChannelPeaks(), capture.stats().seconds(),
                posixTakeStorage().freeBytesAt(recorder.state().path)));
        }
        return TakeEnding::stopped;
    }

    void report(const TakeRecorder::Account& account, const WantedTake& wanted)
    {
        if (wanted.asJson) {
            Terminal::printJson(account.state.toJsonText());
        } else {
            for (const QString& line : accountText(account.state)) {
                Terminal::print(line);
            }
        }
        if (const auto sentence = EndingWords::sentence(account.state)) {
            logLine(*sentence);
        }
    }

}  // namespace

int recordCommand(const QStringList& words)
{
    auto wanted = parseTake(words);
    if (!wanted) {
        return Terminal::misuse(errorText(wanted.error()));
    }
    SignalWatch signals;
    const Platform platform = makeDesktopPlatform();
    if (auto completed = complete(*wanted, *platform.audio, signals); !completed) {
        return Terminal::fail(errorText(completed.error()));
    }
    wanted->request.stopRequested = [&signals] { return signals.stopRequested(); };
    auto recorder = TakeRecorder::start(wanted->request, platform, posixTakeStorage());
    if (!recorder) {
        return Terminal::fail(errorText(recorder.error()));
    }
    const bool hasMeter = wanted->manner == Manner::foreground && Terminal::isInteractive() && !wanted->asJson;
    if (wanted->manner == Manner::detached) {
        logLine(u"recording %1 to %2"_s.arg((*recorder)->state().deviceName, (*recorder)->state().path));
        logLine((*recorder)->source().capture().schedulingNote());
    } else if (!wanted->asJson) {
        Terminal::print(u"Recording %1. Press Ctrl-C to end the take."_s.arg((*recorder)->state().deviceName));
    }
    const TakeEnding ending = hasMeter ? runWithMeter(**recorder, signals) : runDetached(**recorder, signals);
    if (hasMeter) {
        Terminal::endLine();
    }
    const TakeRecorder::Account account = (*recorder)->finish(ending);
    report(account, *wanted);
    return account.isWhole() ? Terminal::done : Terminal::failed;
}

}  // namespace vantiro
