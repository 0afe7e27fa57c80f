// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/Preflight.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Numbers.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantiro {

namespace {

    using Check = PreflightFinding::Check;
    using Severity = PreflightFinding::Severity;

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(Preflight)
    };

    constexpr std::int64_t bytesPerFrame = 6;
    constexpr double secondsPerHour = 3600;

    /// The integer part; what no 64 bits hold even as bytes per second is cut, and NaN is 0.
    std::int64_t wholePart(double value)
    {
        constexpr double limit = 1e18;
        return std::isnan(value) ? 0 : static_cast<std::int64_t>(std::clamp(value, -limit, limit));
    }

    /// A number as the choice of a plural form takes it.
    int pluralCount(std::int64_t count)
    {
        return static_cast<int>(std::clamp<std::int64_t>(count, 0, std::numeric_limits<int>::max()));
    }

    QString peakText(float peakDB)
    {
        const long whole = std::lround(peakDB);
        return (whole == 0 ? Decibels::text(peakDB) : QString::number(whole)) + QLatin1String(" dB");
    }

    PreflightFinding sourceMissing(const PreflightInput& input)
    {
        if (input.sourceIsApp) {
            return {Check::source, Severity::blocker, Words::tr("%1 is not running").arg(input.sourceName),
                Words::tr("Start it again, or pick another source.")};
        }
        return {Check::source, Severity::blocker, Words::tr("%1 is not connected").arg(input.sourceName),
            Words::tr("Check the cable, or pick another source.")};
    }

    PreflightFinding noSignal(const PreflightInput& input)
    {
        const QString advice = input.sourceIsApp
            ? Words::tr(
                  "Play a track in %1. If one is playing, allow Vantiro in System Settings, Privacy and Security, "
                  "System Audio Recording.")
            : Words::tr("Play a track. If one is playing, the mix is not reaching %1: the setup guide shows what goes "
                        "where.");
        return {Check::signal, Severity::warning, Words::tr("No signal yet"), advice.arg(input.sourceName)};
    }

    PreflightFinding signalOrLevel(const PreflightInput& input)
    {
        constexpr float silentDB = -45.0F;
        constexpr float clippingDB = -0.1F;
        constexpr float hotDB = -3.0F;
        constexpr float lowDB = -18.0F;

        const float peakDB = input.peakDB.value_or(silentDB);
        // Written so that NaN is no signal.
        if (!(peakDB > silentDB)) {
            return noSignal(input);
        }
        if (peakDB >= clippingDB) {
            return {Check::level, Severity::blocker, Words::tr("Clipping: the signal reaches 0 dB"),
                Words::tr(
                    "Lower the control that sets the record level, usually the master on the controller or mixer. "
                    "Room volume belongs on the speakers.")};
        }
        if (peakDB > hotDB) {
            return {Check::level, Severity::warning, Words::tr("Hot: peak %1").arg(peakText(peakDB)),
                Words::tr("Two tracks in a blend add a few dB. Bring the master down until one track peaks between -10 "
                          "and -6 dB.")};
        }
        if (peakDB < lowDB) {
            return {Check::level, Severity::warning, Words::tr("Low: peak %1").arg(peakText(peakDB)),
                Words::tr("Raise the master on the controller or mixer until one track peaks between -10 and -6 dB.")};
        }
        return {Check::level, Severity::ok, Words::tr("Level good"), {}};
    }

    PreflightFinding rateFinding(const PreflightInput& input)
    {
        constexpr double lowestRate = 44100;

        const QString rate = groupedNumber(wholePart(input.sampleRate));
        if (input.sampleRate < lowestRate) {
            return {Check::sampleRate, Severity::blocker, Words::tr("Sample rate %1 Hz").arg(rate),
                Words::tr("Set %1 to 44,100 or 48,000 Hz in Audio MIDI Setup.").arg(input.sourceName)};
        }
        if (input.lastSampleRate && *input.lastSampleRate != input.sampleRate) {
            const QString last = groupedNumber(wholePart(*input.lastSampleRate));
            return {Check::sampleRate, Severity::warning, Words::tr("Sample rate changed: %1 to %2 Hz").arg(last, rate),
                Words::tr("Another app changed the rate of %1. The take will be recorded at %2 Hz.")
                    .arg(input.sourceName, rate)};
        }
        return {Check::sampleRate, Severity::ok, Words::tr("Sample rate %1 Hz").arg(rate), {}};
    }

    PreflightFinding diskFinding(std::int64_t freeBytes, std::int64_t bytesPerSecond)
    {
        constexpr double shortSetHours = 4;

        const double seconds = static_cast<double>(freeBytes) / static_cast<double>(bytesPerSecond);
        const double hours = seconds / secondsPerHour;
        if (hours < 1) {
            return {Check::disk, Severity::blocker, Words::tr("Disk almost full"),
                Words::tr("%n minutes of recording fit. Free some space first.", nullptr,
                    pluralCount(wholePart(seconds / 60)))};
        }
        const std::int64_t whole = wholePart(std::round(hours));
        const QString free =
            Words::tr("%1 hours of recording free", nullptr, pluralCount(whole)).arg(groupedNumber(whole));
        if (hours < shortSetHours) {
            return {Check::disk, Severity::warning, free, Words::tr("Enough for a short set.")};
        }
        return {Check::disk, Severity::ok, free, {}};
    }

}  // namespace

QString PreflightFinding::id() const
{
    switch (check) {
    case Check::source:
        return QStringLiteral("source");
    case Check::signal:
        return QStringLiteral("signal");
    case Check::level:
        return QStringLiteral("level");
    case Check::sampleRate:
        return QStringLiteral("sampleRate");
    case Check::disk:
        return QStringLiteral("disk");
    case Check::folder:
        break;
    }
    return QStringLiteral("folder");
}

namespace Preflight {

    std::int64_t bytesPerSecond(double sampleRate)
    {
        return wholePart(sampleRate) * bytesPerFrame;
    }

    std::vector<PreflightFinding> run(const PreflightInput& input)
    {
        if (!input.sourcePresent) {
            return {sourceMissing(input)};
        }
        std::vector<PreflightFinding> findings{
            {Check::source, Severity::ok, Words::tr("%1 connected").arg(input.sourceName), {}},
            signalOrLevel(input),
            rateFinding(input),
        };
        if (input.missingVolume) {
            findings.push_back(missingVolume(*input.missingVolume));
        } else if (input.freeBytes && input.bytesPerSecond >= 1) {
            findings.push_back(diskFinding(*input.freeBytes, input.bytesPerSecond));
        }
        return findings;
    }

    std::vector<PreflightFinding> noSource(const QStringList& choosable)
    {
        const QString advice = choosable.isEmpty()
            ? Words::tr(
                  "Connect an audio interface or a controller, or start a DJ app on this Mac. The setup guide shows "
                  "what goes where.")
            : Words::tr(
                  "Found, but not picked by itself: %1. A microphone records the room, not the mix. If your mix does "
                  "arrive on one of these, choose it in the source menu and Vantiro remembers it. Otherwise the setup "
                  "guide shows what goes where.")
                  .arg(choosable.join(QLatin1String(", ")));
        return {{Check::source, Severity::blocker, Words::tr("No cabled source or DJ app found"), advice}};
    }

    PreflightFinding missingVolume(const QString& name)
    {
        return {Check::folder, Severity::blocker, Words::tr("%1 is not connected").arg(name),
            Words::tr("The takes folder is on %1. Connect it, or choose another folder in Settings.").arg(name)};
    }

    PreflightFinding microphoneDenied()
    {
        return {Check::source, Severity::blocker, Words::tr("Microphone access is off"),
            Words::tr("macOS treats every audio input as a microphone. Allow Vantiro in System Settings, Privacy and "
                      "Security, Microphone. If the meter stays empty after that, quit and reopen Vantiro.")};
    }

    bool canRecord(std::span<const PreflightFinding> findings)
    {
        return std::ranges::none_of(findings, [](const PreflightFinding& finding) {
            return finding.severity == Severity::blocker
                && (finding.check == Check::source || finding.check == Check::folder);
        });
    }

}  // namespace Preflight

}  // namespace vantiro
