// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Log.h"
#include "core/recorder/TakeRecorder.h"
#include "platform/DesktopPlatform.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/MeterLine.h"
#include "tool/SignalWatch.h"
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

    struct Wanted {
        TakeRecorder::Request request;
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

    Result<Wanted> parse(const QStringList& words)
    {
        const auto arguments =
            Arguments::parse(words, {u"--device"_s, u"--app"_s, u"--channels"_s, u"--format"_s, u"--out"_s},
                {u"--detached"_s, u"--force"_s, u"--json"_s});
        if (!arguments) {
            return std::unexpected(arguments.error());
        }
        Wanted wanted;
        wanted.manner = arguments->has(u"--detached"_s) ? Manner::detached : Manner::foreground;
        wanted.asJson = arguments->has(u"--json"_s);
        const auto device = arguments->value(u"--device"_s);
        const auto app = arguments->value(u"--app"_s);
        if (device.has_value() == app.has_value()) {
            return captureFailure(u"give one source: --device UID ('vantiro sources' lists them) or --app ID"_s);
        }
        wanted.request.source = device ? SourceRef::device(*device) : SourceRef::app(*app);
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

    QString endingSentence(const TakeRecorder::Account& account)
    {
        const QString& name = account.state.deviceName;
        switch (account.ending) {
        case TakeEnding::stopped:
            return {};
        case TakeEnding::deviceLost:
            return u"%1 was disconnected. The take ends where the device left, and the file is intact."_s.arg(name);
        case TakeEnding::sourceQuit:
            return u"%1 quit, so the take ends there. The file is intact."_s.arg(name);
        case TakeEnding::rateChanged:
            return u"The sample rate of %1 changed, so Vantiro ended the take there. The file plays at the right "
                   "speed. Start a new take to keep recording."_s.arg(name);
        case TakeEnding::inputStalled:
            return u"%1 stopped sending audio, so Vantiro ended the take where the audio stopped. Check the cable or "
                   "the DJ app, then start a new take."_s.arg(name);
        case TakeEnding::diskFull:
            return u"The disk ran out of space. Vantiro closed the take while it was still whole. Free some space, or "
                   "choose another takes folder in Settings."_s;
        case TakeEnding::wavLimit:
            return u"The WAV take reached its 4 GB limit, so Vantiro closed it while it was still whole. CAF, the "
                   "default format, has no limit."_s;
        case TakeEnding::writeFailed:
            break;
        }
        return u"Part of this take did not reach the disk, so the file is shorter than your mix. Check the disk that "
               "holds the takes folder."_s;
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

    void report(const TakeRecorder::Account& account, const Wanted& wanted)
    {
        if (wanted.asJson) {
            Terminal::printJson(account.state.toJsonText());
        } else {
            for (const QString& line : accountText(account.state)) {
                Terminal::print(line);
            }
        }
        if (const QString sentence = account.isWhole()
                ? endingSentence(account)
                : endingSentence({.state = account.state, .ending = TakeEnding::writeFailed});
            !sentence.isEmpty()) {
            logLine(sentence);
        }
    }

}  // namespace

int recordCommand(const QStringList& words)
{
    auto wanted = parse(words);
    if (!wanted) {
        return Terminal::misuse(errorText(wanted.error()));
    }
    SignalWatch signals;
    const Platform platform = makeDesktopPlatform();
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
