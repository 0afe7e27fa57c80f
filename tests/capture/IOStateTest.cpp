// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/IOState.h"

#include "core/capture/PeakScan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace vantiro {

namespace {

    using Counts = std::vector<std::int64_t>;
    using Samples = std::vector<float>;

    /// Answers as the test bids it.
    class Sink final : public FrameSink {
    public:
        Offer offer(const float*, std::int64_t frames) noexcept override
        {
            chunks.push_back(frames);
            return answer;
        }

        Offer answer;
        Counts chunks;
    };

    void feed(IOState& io, const Samples& samples, std::optional<double> time = std::nullopt)
    {
        const AudioBuffer buffer{samples.data(), static_cast<std::int64_t>(samples.size() * sizeof(float))};
        io.process({.buffers = {&buffer, 1}, .sampleTime = time, .hostNanoseconds = 1});
    }

    /// The count of periods, frame by frame as it is defined.
    struct Crossings {
        bool wasNegative = false;
        std::int64_t since = -1;
        double count = 0;
        double sum = 0;
        double squares = 0;

        void add(float sample)
        {
            const bool counts = since >= 0 && since <= 1'000'000;
            since = counts ? since + 1 : -1;
            if (sample < -0.001F) {
                wasNegative = true;
            } else if (sample > 0.001F && wasNegative) {
                wasNegative = false;
                count += counts ? 1 : 0;
                sum += counts ? static_cast<double>(since) : 0;
                squares += counts ? static_cast<double>(since) * static_cast<double>(since) : 0;
                since = 0;
            }
        }

        [[nodiscard]] bool steadyTone() const
        {
            const double mean = sum / count;
            return count >= 100 && std::sqrt(std::max(squares / count - mean * mean, 0.0)) / mean < 0.05;
        }
    };

    /// A rising crossing at the start and at the end of each gap: `count` gaps that take turns, then some more.
    Samples pulses(std::size_t count, Counts turns, const Counts& more = {}, float level = 0.5F)
    {
        Counts gaps;
        for (std::size_t index = 0; index < count; ++index) {
            gaps.push_back(turns[index % turns.size()]);
        }
        gaps.insert(gaps.end(), more.begin(), more.end());
        Samples signal{-level, level};
        for (const std::int64_t gap : gaps) {
            signal.resize(signal.size() + static_cast<std::size_t>(gap));
            signal.end()[-2] = -level;
            signal.back() = level;
        }
        return signal;
    }

}  // namespace

TEST(IOStateTest, TakesABlockForAsLongAsItsShortestBufferAndDropsWhatItCannotRead)
{
    const Samples samples(200, 0.25F);
    const auto bytes = [&](std::int64_t count) { return AudioBuffer{samples.data(), count}; };
    // The second of three buffers, of 2, 1 and 1 channels, is not wanted.
    for (const auto& [buffers, frames, dropped] : std::vector<std::tuple<std::vector<AudioBuffer>, int, int>>{
             {{bytes(800), bytes(8), bytes(240)}, 60, 0}, {{bytes(80), {}, bytes(800)}, 10, 0},
             {{bytes(87), {}, bytes(800)}, 10, 0}, {{bytes(80), bytes(80), {}}, 0, 1}, {{bytes(80), bytes(80)}, 0, 1},
             {{bytes(80), bytes(80), bytes(3)}, 0, 0}, {{}, 0, 0}}) {
        IOState io(Counts{1, 4}, Counts{2, 1, 1});
        io.process({.buffers = buffers, .sampleTime = 5, .hostNanoseconds = 7});
        EXPECT_EQ(io.frames(), frames);
        EXPECT_EQ(io.droppedCallbacks(), dropped);
        EXPECT_EQ(io.clockChecked(), frames > 0);
    }
}

TEST(IOStateTest, CountsJumpsOfTheClockByWholeFrames)
{
    IOState io(Counts{1}, Counts{1});
    feed(io, Samples(100));
    EXPECT_FALSE(io.clockChecked());
    for (const auto& [time, discontinuities, lost] : std::vector<std::tuple<std::optional<double>, int, int>>{
             {1000, 0, 0}, {1100.5, 0, 0}, {1201.5, 1, 1}, {1201.5, 2, 1}, {1301.5, 2, 1}, {std::nullopt, 2, 1},
             {1501.5, 3, 101}, {1605.4, 4, 104}, {1704.5, 4, 104}, {0, 5, 104}, {101, 6, 105}}) {
        feed(io, Samples(100), time);
        EXPECT_EQ(io.discontinuities(), discontinuities) << time.value_or(-1);
        EXPECT_EQ(io.lostFrames(), lost) << time.value_or(-1);
    }
    EXPECT_TRUE(io.clockChecked());
    EXPECT_EQ(io.frames(), 1200);
}

TEST(IOStateTest, TellsASteadyToneFromEverythingElse)
{
    Samples sine(48'000);
    std::ranges::generate(
        sine, [angle = 0.0]() mutable { return static_cast<float>(std::sin(angle += std::numbers::pi / 24)); });
    constexpr std::int64_t longest = 1'000'001;
    for (const auto& [name, signal, expected] : std::vector<std::tuple<const char*, Samples, bool>>{
             {"sine of 1 kHz", sine, true},
             {"100 gaps", pulses(100, {48}), true},
             {"99 gaps", pulses(99, {48}), false},
             {"two lengths far apart", pulses(400, {40, 56}), false},
             {"two lengths close by", pulses(400, {47, 49}), true},
             {"inside the dead band", pulses(400, {48}, {}, 0.001F), false},
             {"just outside the dead band", pulses(400, {48}, {}, std::nextafter(0.001F, 1.0F)), true},
             {"longest gap counts", pulses(100, {48}, {longest}), false},
             {"longer gap does not count", pulses(100, {48}, {longest + 1}), true},
             {"longer gap completes nothing", pulses(99, {48}, {longest + 1}), false},
             {"count starts afresh after it", pulses(99, {48}, {longest + 1, 48}), true},
         }) {
        // Blocks that let crossings fall on every border, of blocks and of chunks.
        for (const std::size_t length : {std::size_t{101}, std::size_t{40'001}}) {
            IOState io(Counts{1}, Counts{1});
            for (std::size_t start = 0; start < signal.size(); start += length) {
                const auto block = std::span(signal).subspan(start, std::min(length, signal.size() - start));
                feed(io, Samples(block.begin(), block.end()));
            }
            EXPECT_EQ(io.steadyTone(), expected) << name;
        }
    }
}

TEST(IOStateTest, AgreesOnRandomTonesWithCountingFrameByFrame)
{
    std::mt19937 random(7);
    std::normal_distribution<double> spread;
    std::uniform_real_distribution<float> noise(-0.001F, 0.001F);
    int steady = 0;
    int compared = 0;
    for (int round = 0; round < 60; ++round) {
        // Around the limit between a tone and none, so that one wrong gap shows.
        const double deviation = 48 * (0.046 + 0.008 * round / 60);
        Samples stereo;
        for (int pulse = 0; pulse < 400; ++pulse) {
            const long period = std::max(4L, std::lround(48 + spread(random) * deviation));
            for (long frame = 0; frame < period; ++frame) {
                const float level = frame < 2 ? -0.1F : frame > period - 3 ? 0.1F : 0;
                stereo.insert(stereo.end(), {0.9F, noise(random) + level});
            }
        }
        IOState io(round % 2 == 0 ? Counts{2} : Counts{2, 1}, Counts{2});
        Crossings reference;
        for (std::span rest(stereo); !rest.empty(); ++compared) {
            const auto block = rest.first(std::min<std::size_t>(rest.size(), 2 + 2 * (random() % 700)));
            rest = rest.subspan(block.size());
            feed(io, Samples(block.begin(), block.end()));
            for (std::size_t index = 1; index < block.size(); index += 2) {
                reference.add(block[index]);
            }
            ASSERT_EQ(io.steadyTone(), reference.steadyTone()) << round;
            steady += reference.steadyTone() ? 1 : 0;
        }
    }
    EXPECT_GT(steady, compared / 20);
    EXPECT_LT(steady, compared * 19 / 20);
}

TEST(PeakScanTest, AgreesWithOneSampleAtATime)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<float> samples(-2, 2);
    for (const std::size_t channels : {1U, 2U, 3U, 8U}) {
        for (std::size_t frames = 0; frames < 70; ++frames) {
            Samples block(frames * channels);
            ChannelPeaks expected;
            for (std::size_t index = 0; index < block.size(); ++index) {
                const auto dice = random() % 100;
                block[index] = dice < 5        ? std::nanf("")
                    : dice == 5 && frames > 60 ? -std::numeric_limits<float>::infinity()
                                               : samples(random);
                const float magnitude = dice < 5 ? 0 : std::abs(block[index]);
                expected.all = std::max(expected.all, magnitude);
                expected.first = std::max(expected.first, index % channels == 0 ? magnitude : 0);
                expected.second = std::max(expected.second, index % channels == 1 ? magnitude : 0);
            }
            const auto [all, first, second] =
                scanPeaks(block.data(), static_cast<std::int64_t>(frames), static_cast<std::int64_t>(channels));
            EXPECT_TRUE(all == expected.all && first == expected.first && second == expected.second)
                << channels << " channels, " << frames << " frames: " << all << ", " << first << ", " << second;
        }
    }
}

TEST(IOStateTest, HoldsEachPeakUntilItIsTaken)
{
    IOState io(Counts{1, 2, 3}, Counts{3});
    feed(io, {0.1F, -0.2F, 0.4F, 0, 0, 0});
    feed(io, {0.3F, 0.1F, 0});
    EXPECT_EQ(io.takeBlockPeak(), 0.4F);
    EXPECT_EQ(io.takeLeftPeak(), 0.3F);
    EXPECT_EQ(io.takeRightPeak(), 0.2F);
    EXPECT_EQ(io.takeBlockPeak() + io.takeLeftPeak() + io.takeRightPeak(), 0);
    EXPECT_EQ(io.topPeak(), 0.4F);
}

TEST(IOStateTest, CutsLongBlocksGoesOnWhenTheSinkIsFullAndStopsWhenItHasEnded)
{
    IOState io(Counts{1}, Counts{1});
    Sink sink;
    io.setSink(&sink);
    sink.answer = {FrameSink::Offer::full, 0};
    feed(io, Samples(40'000, 0.5F), 0);
    EXPECT_EQ(sink.chunks, (Counts{16'384, 16'384, 7'232}));
    EXPECT_EQ(io.frames(), 40'000);
    EXPECT_EQ(io.writeErrors(), 3);
    EXPECT_EQ(io.overflowFrames(), 40'000);

    sink.answer = {FrameSink::Offer::ended, 10};
    Samples last(40'000, 0.1F);
    last[10] = 1;
    feed(io, last, 40'000);
    feed(io, last, 99'000);
    EXPECT_EQ(io.frames(), 40'010);
    EXPECT_EQ(io.framesBeforeLast(), 40'000);
    EXPECT_EQ(sink.chunks.size(), 4U);
    EXPECT_EQ(io.topPeak(), 0.5F) << "what lies behind the end of the take is not heard either";
    EXPECT_EQ(io.discontinuities(), 0);
    EXPECT_EQ(io.writeErrors(), 3);
}

}  // namespace vantiro
