// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/Preflight.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    using Check = PreflightFinding::Check;
    using Severity = PreflightFinding::Severity;

    /// A source on which nothing is to be found fault with; its name must come through as it is.
    PreflightInput fineInput()
    {
        return {.sourceName = u"Mixer %1 %2"_s,
            .sourcePresent = true,
            .sampleRate = 48000,
            .peakDB = -8.0F,
            .bytesPerSecond = Preflight::bytesPerSecond(48000)};
    }

}  // namespace

TEST(Preflight, NamesNothingButASourceThatIsNotThere)
{
    PreflightInput input = fineInput();
    input.sourcePresent = false;
    input.missingVolume = u"Disk"_s;
    EXPECT_EQ(Preflight::run(input),
        (std::vector<PreflightFinding>{{Check::source, Severity::blocker, u"Mixer %1 %2 is not connected"_s,
            u"Check the cable, or pick another source."_s}}));
    input.sourceIsApp = true;
    EXPECT_EQ(Preflight::run(input),
        (std::vector<PreflightFinding>{{Check::source, Severity::blocker, u"Mixer %1 %2 is not running"_s,
            u"Start it again, or pick another source."_s}}));
}

TEST(Preflight, ListsItsChecksInOrderAndPassesAFineSource)
{
    PreflightInput input = fineInput();
    EXPECT_EQ(Preflight::run(input),
        (std::vector<PreflightFinding>{
            {Check::source, Severity::ok, u"Mixer %1 %2 connected"_s, {}},
            {Check::level, Severity::ok, u"Level good"_s, {}},
            {Check::sampleRate, Severity::ok, u"Sample rate 48,000 Hz"_s, {}},
        }));
    input.freeBytes = 0;
    input.missingVolume = u"Disk %1"_s;
    EXPECT_EQ(Preflight::run(input).back(),
        (PreflightFinding{Check::folder, Severity::blocker, u"Disk %1 is not connected"_s,
            u"The takes folder is on Disk %1. Connect it, or choose another folder in Settings."_s}));
}

TEST(Preflight, JudgesTheLevel)
{
    struct Case {
        std::optional<float> peakDB;
        Severity severity;
        QString title;
    };
    const Case cases[] = {
        {std::nullopt, Severity::warning, u"No signal yet"_s},
        {std::numeric_limits<float>::quiet_NaN(), Severity::warning, u"No signal yet"_s},
        {-45.0F, Severity::warning, u"No signal yet"_s},
        {-44.9F, Severity::warning, u"Low: peak -45 dB"_s},
        {-18.1F, Severity::warning, u"Low: peak -18 dB"_s},
        {-18.0F, Severity::ok, u"Level good"_s},
        {-3.0F, Severity::ok, u"Level good"_s},
        {-2.9F, Severity::warning, u"Hot: peak -3 dB"_s},
        {-0.5F, Severity::warning, u"Hot: peak -1 dB"_s},
        {-0.11F, Severity::warning, u"Hot: peak -0.1 dB"_s},
        {-0.1F, Severity::blocker, u"Clipping: the signal reaches 0 dB"_s},
        {std::numeric_limits<float>::infinity(), Severity::blocker, u"Clipping: the signal reaches 0 dB"_s},
    };
    PreflightInput input = fineInput();
    for (const Case& test : cases) {
        input.peakDB = test.peakDB;
        const PreflightFinding finding = Preflight::run(input)[1];
        EXPECT_EQ(finding.title, test.title);
        EXPECT_EQ(finding.severity, test.severity) << qPrintable(test.title);
        EXPECT_EQ(finding.id(), test.title == u"No signal yet"_s ? u"signal"_s : u"level"_s);
    }
    input.peakDB.reset();
    EXPECT_TRUE(Preflight::run(input)[1].advice.contains(u"is not reaching Mixer %1 %2: the setup guide"_s));
    input.sourceIsApp = true;
    EXPECT_TRUE(Preflight::run(input)[1].advice.startsWith(u"Play a track in Mixer %1 %2. If one"_s));
}

TEST(Preflight, JudgesTheSampleRate)
{
    const auto finding = [](double rate, std::optional<double> last) {
        PreflightInput input = fineInput();
        input.sampleRate = rate;
        input.lastSampleRate = last;
        return Preflight::run(input)[2];
    };
    EXPECT_EQ(
        finding(44100, 44100), (PreflightFinding{Check::sampleRate, Severity::ok, u"Sample rate 44,100 Hz"_s, {}}));
    EXPECT_EQ(finding(44099.9, 48000),
        (PreflightFinding{Check::sampleRate, Severity::blocker, u"Sample rate 44,099 Hz"_s,
            u"Set Mixer %1 %2 to 44,100 or 48,000 Hz in Audio MIDI Setup."_s}));
    EXPECT_EQ(finding(48000, 44100),
        (PreflightFinding{Check::sampleRate, Severity::warning, u"Sample rate changed: 44,100 to 48,000 Hz"_s,
            u"Another app changed the rate of Mixer %1 %2. The take will be recorded at 48,000 Hz."_s}));
    EXPECT_EQ(Preflight::bytesPerSecond(44100.9), 264600);
    EXPECT_EQ(finding(std::numeric_limits<double>::infinity(), {}).severity, Severity::ok) << "no number is too large";
}

TEST(Preflight, JudgesTheRoomOnTheDisk)
{
    constexpr std::int64_t second = 288000;
    constexpr std::int64_t hour = 3600 * second;
    const QString shortSet = u"Enough for a short set."_s;
    struct Case {
        std::int64_t freeBytes;
        Severity severity;
        QString title;
        QString advice;
    };
    // Plural forms are the catalogue's.
    const Case cases[] = {
        {0, Severity::blocker, u"Disk almost full"_s, u"0 minutes of recording fit. Free some space first."_s},
        {179 * second, Severity::blocker, u"Disk almost full"_s,
            u"2 minutes of recording fit. Free some space first."_s},
        {hour - 1, Severity::blocker, u"Disk almost full"_s, u"59 minutes of recording fit. Free some space first."_s},
        {hour * 3 / 2, Severity::warning, u"2 hours of recording free"_s, shortSet},
        {hour * 36 / 10, Severity::warning, u"4 hours of recording free"_s, shortSet},
        {hour * 4, Severity::ok, u"4 hours of recording free"_s, {}},
        {hour * 1234, Severity::ok, u"1,234 hours of recording free"_s, {}},
        {std::numeric_limits<std::int64_t>::max(), Severity::ok, u"8,895,999,264 hours of recording free"_s, {}},
    };
    PreflightInput input = fineInput();
    for (const Case& test : cases) {
        input.freeBytes = test.freeBytes;
        EXPECT_EQ(Preflight::run(input).back(), (PreflightFinding{Check::disk, test.severity, test.title, test.advice}))
            << qPrintable(test.title) << test.freeBytes;
    }
    input.bytesPerSecond = 0;
    EXPECT_EQ(Preflight::run(input).size(), 3U);
}

TEST(Preflight, OnlyAMissingSourceOrFolderKeepsFromRecording)
{
    PreflightInput input = fineInput();
    input.sampleRate = 22050;
    input.peakDB = 0.0F;
    input.freeBytes = 0;
    EXPECT_TRUE(Preflight::canRecord(Preflight::run(input)));
    EXPECT_TRUE(Preflight::canRecord({}));
    input.missingVolume = u"Disk"_s;
    EXPECT_FALSE(Preflight::canRecord(Preflight::run(input)));
    EXPECT_FALSE(Preflight::canRecord(std::vector{Preflight::microphoneDenied()}));

    const auto found = Preflight::noSource({u"Mic %1"_s, u"Webcam"_s});
    EXPECT_FALSE(Preflight::canRecord(found));
    EXPECT_TRUE(found[0].advice.startsWith(u"Found, but not picked by itself: Mic %1, Webcam. A microphone records"_s));
    EXPECT_TRUE(
        Preflight::noSource({})[0].advice.startsWith(u"Connect an audio interface or a controller, or start"_s));
}

}  // namespace vantiro
