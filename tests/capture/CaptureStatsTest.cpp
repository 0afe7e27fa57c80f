// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/CaptureStats.h"

#include "core/foundation/Json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantiro {

namespace {

    constexpr std::int64_t beyondDouble = (std::int64_t{1} << 53) + 1;

    const QByteArray required = R"({"sampleRate":44100.5,"channels":2,"frames":9007199254740993,"discontinuities":1,)"
                                R"("lostFrames":48000,"overflowFrames":0,"audioSpan":1.5,"hostSpan":1.25,"peak":0.5,)"
                                R"("deviceLost":true,"sampleRateChanged":false)";
    const QByteArray optional =
        R"(,"writeErrors":3,"fileFrames":7,"clockChecked":true,"steadyTone":false,"droppedCallbacks":0)";

    CaptureStats exampleStats()
    {
        return {.sampleRate = 44100.5,
            .channels = 2,
            .frames = beyondDouble,
            .discontinuities = 1,
            .lostFrames = 48000,
            .audioSpan = 1.5,
            .hostSpan = 1.25,
            .peak = 0.5F,
            .deviceLost = true};
    }

    Result<CaptureStats> decode(const QByteArray& text)
    {
        return CaptureStats::fromJson(json::object(text).value_or(QJsonObject()));
    }

}  // namespace

TEST(CaptureStats, WritesItsKeysInTheOrderOfTheFieldsAndLeavesAbsentOnesOut)
{
    CaptureStats stats = exampleStats();
    EXPECT_EQ(stats.toJsonText(), required + '}');
    EXPECT_EQ(decode(stats.toJsonText()), stats);

    stats.writeErrors = 3;
    stats.fileFrames = 7;
    stats.clockChecked = true;
    stats.steadyTone = false;
    stats.droppedCallbacks = 0;
    EXPECT_EQ(stats.toJsonText(), required + optional + '}');
    EXPECT_EQ(decode(stats.toJsonText()), stats);
    EXPECT_EQ(json::object(stats.toJsonText()), stats.toJson());
}

TEST(CaptureStats, RefusesRecordsThatLackOrMistypeAKey)
{
    const QByteArray whole = required + optional + '}';
    for (const QString& key : json::object(required + '}')->keys()) {
        QJsonObject object = *json::object(whole);
        object.remove(key);
        EXPECT_FALSE(CaptureStats::fromJson(object)) << qPrintable(key);
        object.insert(key, QJsonValue::Null);
        EXPECT_FALSE(CaptureStats::fromJson(object)) << qPrintable(key);
    }
    for (const QString& key : json::object(whole)->keys()) {
        QJsonObject object = *json::object(whole);
        object.insert(key, QStringLiteral("1"));
        EXPECT_FALSE(CaptureStats::fromJson(object)) << qPrintable(key);
    }
    for (const char* number : {"1.5", "1e30", "9223372036854775808", "true"}) {
        QByteArray text = whole;
        EXPECT_FALSE(decode(text.replace("\"lostFrames\":48000", QByteArray("\"lostFrames\":") + number))) << number;
    }
}

TEST(CaptureStats, NeverWritesANumberThatIsNotFinite)
{
    for (const double broken : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
             std::numeric_limits<double>::quiet_NaN()}) {
        CaptureStats stats = exampleStats();
        stats.peak = static_cast<float>(broken);
        stats.hostSpan = broken;
        for (const auto& decoded : {CaptureStats::fromJson(stats.toJson()), decode(stats.toJsonText())}) {
            ASSERT_TRUE(decoded) << stats.toJsonText().toStdString();
            EXPECT_EQ(decoded->peak, std::numeric_limits<float>::max());
            EXPECT_EQ(decoded->hostSpan, std::numeric_limits<double>::max());
        }
    }
}

TEST(CaptureStats, TellsWhetherDeliveredAudioIsMissingFromTheFile)
{
    struct Case {
        const char* name;
        CaptureStats stats;
        std::optional<std::int64_t> missing;
        bool failed;
    };
    const Case cases[] = {
        {"no file", {.frames = 1000}, std::nullopt, false},
        {"whole", {.frames = 1000, .writeErrors = 0, .fileFrames = 1000, .droppedCallbacks = 0}, 0, false},
        {"more than delivered", {.frames = 1000, .fileFrames = 1200}, 0, false},
        {"short", {.frames = 1000, .fileFrames = 900}, 100, true},
        {"jumps of the clock", {.frames = 1000, .discontinuities = 2, .lostFrames = 48000}, std::nullopt, false},
        {"failed write", {.frames = 1000, .writeErrors = 1, .fileFrames = 1000}, 0, true},
        {"full ring", {.frames = 1000, .overflowFrames = 1}, std::nullopt, true},
        {"dropped block", {.frames = 1000, .droppedCallbacks = 1}, std::nullopt, true},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(test.stats.missingFrames(), test.missing) << test.name;
        EXPECT_EQ(test.stats.writeFailed(), test.failed) << test.name;
    }
}

TEST(CaptureStats, DerivesLengthClockAndPeakWithoutDividingByNothing)
{
    const CaptureStats stats{.sampleRate = 48000, .frames = 72000, .audioSpan = 10.1, .hostSpan = 10, .peak = 1};
    EXPECT_EQ(stats.seconds(), 1.5);
    EXPECT_NEAR(stats.deviationPercent(), 1, 1e-9);
    EXPECT_EQ(stats.peakDB(), 0);

    const CaptureStats empty{.frames = 72000, .audioSpan = 10, .peak = std::nanf("")};
    EXPECT_EQ(empty.seconds(), 0);
    EXPECT_EQ(empty.deviationPercent(), 0);
    EXPECT_EQ(empty.peakDB(), -120);
}

}  // namespace vantiro
