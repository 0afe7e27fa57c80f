// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/GraphTest.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    struct Recording : test::Row {
        VirtualDevice::Options device;
        std::optional<std::vector<std::int64_t>> channels;  ///< As they are asked for, from 1.
        std::vector<int> expected;                          ///< What the columns of the file are, from 0.
        TakeFormat format = TakeFormat::caf;
    };

    const std::vector<Recording> recordings{
        {"Stereo", {}, std::nullopt, {0, 1}},
        {"StereoWav", {}, std::nullopt, {0, 1}, TakeFormat::wav},
        {"Mono", {.channels = 1}, std::nullopt, {0}},
        {"OddBytesWav", {.channels = 1}, std::vector<std::int64_t>{1}, {0}, TakeFormat::wav},
        {"ChannelsThreeAndFour", {.channels = 8}, std::vector<std::int64_t>{3, 4}, {2, 3}},
        {"Reversed", {.channels = 8}, std::vector<std::int64_t>{4, 3}, {3, 2}},
        {"OneChannelTwice", {.channels = 4}, std::vector<std::int64_t>{2, 2}, {1, 1}},
        {"ManyChannels", {.channels = 8, .quantum = 64}, std::vector<std::int64_t>{8, 1, 5, 2, 7, 3},
            {7, 0, 4, 1, 6, 2}},
        {"HighRate", {.sampleRate = 96'000, .quantum = 1024}, std::nullopt, {0, 1}},
        {"RateThatTheGraphDoesNotRunAt", {.sampleRate = 44'100}, std::nullopt, {0, 1}},
    };

    class RecordingTest : public test::GraphTest, public ::testing::WithParamInterface<Recording> { };

}  // namespace

TEST_P(RecordingTest, IsBitByBitWhatWasPlayed)
{
    const Recording& wanted = GetParam();
    const auto card = device(wanted.device);
    ASSERT_NE(card, nullptr);
    const auto state = start(
        {.source = SourceRef::device(QStringLiteral("card")), .channels = wanted.channels, .format = wanted.format});
    ASSERT_TRUE(state) << qPrintable(errorText(state.error()));
    std::vector<std::int64_t> numbers(wanted.expected.begin(), wanted.expected.end());
    std::ranges::for_each(numbers, [](std::int64_t& number) { ++number; });
    EXPECT_EQ(state->channels, numbers);
    EXPECT_TRUE(state->path.startsWith(m_sandbox.home() + QStringLiteral("/Music/Vantiro/mix-"))
        && state->path.endsWith(u'.' + rawValue(wanted.format)))
        << qPrintable(state->path);
    EXPECT_EQ(state->deviceUID, QStringLiteral("card"));
    EXPECT_EQ(state->stats.value_or(CaptureStats{}).sampleRate, wanted.device.sampleRate);

    ASSERT_TRUE(plays(*card, 1, wanted.device.sampleRate));
    const std::int64_t played = card->contentPosition();
    const auto last = RecorderClient::stop(15s);
    ASSERT_TRUE(last && *last);
    EXPECT_FALSE((*last)->endedBecause);
    EXPECT_FALSE((*last)->stats->deviceLost);
    EXPECT_EQ((*last)->stats->sampleRate, wanted.device.sampleRate);
    EXPECT_GE(expectWhole(**last, wanted.expected), played - std::int64_t{2} * wanted.device.quantum);
    expectIdle();
}

INSTANTIATE_TEST_SUITE_P(All, RecordingTest, ::testing::ValuesIn(recordings), test::rowName);

}  // namespace vantiro
