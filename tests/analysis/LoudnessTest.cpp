// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/LoudnessMeter.h"
#include "core/analysis/TakePass.h"
#include "tests/analysis/PlainLoudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace vantiro {

namespace {

    using test::MemoryTake;
    using test::Planes;

    constexpr double farBelow = 1e-9;  ///< LU: what rounding may change.

    struct Tone {
        double peakDB;
        double seconds;
    };

    /// Tones after each other, the same in each channel, without a jump of phase.
    Planes tones(double sampleRate, const std::vector<Tone>& parts, std::size_t channels = 2, double pitch = 1000)
    {
        std::vector<float> plane;
        for (const Tone& part : parts) {
            const double gain = std::pow(10, part.peakDB / 20);
            const auto end = plane.size() + static_cast<std::size_t>(std::lround(part.seconds * sampleRate));
            while (plane.size() < end) {
                const double angle = 2 * std::numbers::pi * pitch * static_cast<double>(plane.size()) / sampleRate;
                plane.push_back(static_cast<float>(gain * std::sin(angle)));
            }
        }
        return Planes(channels, plane);
    }

    LoudnessMeter metered(double sampleRate, const Planes& planes, std::int64_t chunk)
    {
        LoudnessMeter meter = *LoudnessMeter::make(sampleRate, std::ssize(planes));
        const std::int64_t frames = std::ssize(planes.front());
        for (std::int64_t first = 0; first < frames; first += chunk) {
            std::vector<const float*> pointers;
            for (const std::vector<float>& plane : planes) {
                pointers.push_back(plane.data() + first);
            }
            meter.add(pointers, std::min(chunk, frames - first));
        }
        return meter;
    }

    std::vector<const BlockKernel*> kernels()
    {
        std::vector<const BlockKernel*> all{&BlockKernel::baseline()};
        if (BlockKernel::wide() != nullptr) {
            all.push_back(BlockKernel::wide());
        }
        return all;
    }

}  // namespace

TEST(LoudnessTest, ReadsToneSequencesLikeThePlainDefinition)
{
    // After EBU Tech 3341, with a tenth of its durations; a change of level then weighs more in the mean.
    const struct {
        const char* name;
        std::vector<Tone> parts;
        double expected;
        double tolerance;
    } sequences[]{
        {"one level", {{-23, 2}}, -23, 0.02},
        {"a lower level", {{-33, 2}}, -33, 0.02},
        {"quiet ends", {{-36, 1}, {-23, 6}, {-36, 1}}, -23, 0.3},
        {"quiet and silent ends", {{-72, 1}, {-36, 1}, {-23, 6}, {-36, 1}, {-72, 1}}, -23, 0.3},
        {"all above the relative gate", {{-26, 2}, {-20, 2.01}, {-26, 2}}, -23, 0.2},
    };
    for (const double sampleRate : {44'100.0, 48'000.0, 96'000.0}) {
        for (const auto& sequence : sequences) {
            SCOPED_TRACE(testing::Message() << sequence.name << " at " << sampleRate);
            const Planes planes = tones(sampleRate, sequence.parts);
            const auto plain = test::plainLoudness(sampleRate, planes);
            ASSERT_TRUE(plain);
            EXPECT_NEAR(*plain, sequence.expected, sequence.tolerance);
            EXPECT_NEAR(metered(sampleRate, planes, 65'536).integrated().value_or(0), *plain, farBelow);
            for (const BlockKernel* const kernel : kernels()) {
                MemoryTake take(sampleRate, planes);
                const auto scanned = scanTake(take, 0.05, 1, {}, {.kernel = kernel, .segmentBlocks = 70});
                ASSERT_TRUE(scanned);
                EXPECT_NEAR(scanned->loudness.value_or(0), *plain, farBelow) << kernel->name;
            }
        }
    }
    EXPECT_NEAR(metered(48'000, tones(48'000, {{0, 1}}, 1, 997), 48'000).integrated().value_or(0), -3.01, 0.02);
}

TEST(LoudnessTest, TheFirstGateAdmitsWhatLiesOnItAndTheSecondDoesNot)
{
    constexpr double gate = 1.1724653045822981e-7;
    const double below = std::nextafter(gate, 0.0);
    EXPECT_NEAR(integratedLoudness(std::vector(4, gate)).value_or(0), -70, farBelow);
    EXPECT_FALSE(integratedLoudness(std::vector(4, below)));
    EXPECT_FALSE(integratedLoudness(std::vector(3, 1.0))) << "shorter than a block";

    // Blocks of 19 and 1: a tenth of their mean is 1.
    const auto decibels = [](double power) { return 10 * std::log10(power) - 0.691; };
    EXPECT_NEAR(integratedLoudness(std::vector{73.0, 1.0, 1.0, 1.0, 1.0}).value_or(0), decibels(19), farBelow);
    EXPECT_NEAR(integratedLoudness(std::vector{73.0, 1.0, 1.0, 1.0, 1.5}).value_or(0), decibels(20.125 / 2), farBelow);
    // A block below the first gate does not come back through a second gate that is lower still.
    EXPECT_NEAR(integratedLoudness(std::vector{gate, gate, gate, gate, below}).value_or(0), -70, farBelow);
}

TEST(LoudnessTest, IsAbsentWhereItHasNoMeaning)
{
    EXPECT_TRUE(LoudnessMeter::make(4000, 1));
    for (const double sampleRate : {3999.0, 0.0, -48'000.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(LoudnessMeter::make(sampleRate, 2)) << sampleRate;
    }
    EXPECT_FALSE(LoudnessMeter::make(48'000, 0));
    EXPECT_FALSE(metered(48'000, Planes(2, std::vector<float>(48'000)), 48'000).integrated()) << "silence";
    EXPECT_FALSE(metered(48'000, tones(48'000, {{0, 0.3999}}), 48'000).integrated()) << "too short";
    EXPECT_TRUE(metered(48'000, tones(48'000, {{0, 0.4}}), 48'000).integrated());
}

TEST(LoudnessTest, CutsStepsOfATenthOfASecondWhateverTheChunks)
{
    EXPECT_EQ(loudnessStepFrames(2), 1);
    EXPECT_EQ(loudnessStepFrames(11'025), 1103);
    EXPECT_EQ(loudnessStepFrames(44'100), 4410);

    const Planes planes = tones(11'025, {{-3, 0.75}, {-20, 0.3}});
    const std::vector<double> whole = metered(11'025, planes, 1'000'000).steps();
    EXPECT_EQ(whole.size(), 10U);
    for (const std::int64_t chunk : {17, 1103, 2206, 5000}) {
        const std::vector<double> steps = metered(11'025, planes, chunk).steps();
        ASSERT_EQ(steps.size(), whole.size());
        for (std::size_t step = 0; step < whole.size(); ++step) {
            EXPECT_NEAR(steps[step], whole[step], 1e-14 * whole[step]) << "step " << step << ", chunks of " << chunk;
        }
    }
    Framer framer(4);
    EXPECT_TRUE(framer.advance(0).empty());
    EXPECT_EQ(framer.advance(3), (std::vector<Framer::Chunk>{{0, 3, false}}));
    EXPECT_EQ(framer.advance(6), (std::vector<Framer::Chunk>{{0, 1, true}, {1, 4, true}, {5, 1, false}}));
    EXPECT_EQ(framer.fill(), 1);
}

}  // namespace vantiro
