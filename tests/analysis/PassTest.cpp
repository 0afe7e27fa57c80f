// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakePass.h"
#include "core/takes/SampleTakes.h"
#include "core/takes/Takes.h"
#include "tests/analysis/PlainLoudness.h"
#include "tests/support/Sandbox.h"

#include <QFile>

#include <cmath>
#include <limits>
#include <random>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using test::MemoryTake;
    using test::Planes;
    using Access = MemoryTake::Access;

    using AnalysisLoadTest = test::SandboxTest;

    constexpr double clipGap = 0.05;
    constexpr std::int64_t slices = 37;
    constexpr std::int64_t segmentBlocks = 23;

    Planes noise(std::size_t channels, std::size_t frames)
    {
        std::minstd_rand random(7);
        std::uniform_real_distribution<float> level(-0.7F, 0.7F);
        Planes planes(channels, std::vector<float>(frames));
        for (std::vector<float>& plane : planes) {
            for (float& sample : plane) {
                sample = level(random);
            }
        }
        return planes;
    }

    /// Everything that a pass finds, one sample after the other and in 64 bits.
    ScannedTake plainScan(double sampleRate, Planes planes, std::int64_t statedFrames)
    {
        const std::int64_t channels = std::ssize(planes);
        const auto gap = static_cast<std::int64_t>(sampleRate * clipGap);
        ScannedTake take;
        take.frames = std::ssize(planes.front());
        take.blockFrames = std::max(1L, std::lround(sampleRate / 100));
        const std::int64_t total = std::max<std::int64_t>(1, statedFrames);
        const std::int64_t count = std::min(slices, total);
        take.overview.peaks.resize(static_cast<std::size_t>(count));
        std::vector<bool> clipped(take.overview.peaks.size());
        std::int64_t slice = 0;
        for (std::int64_t frame = 0; frame < take.frames; ++frame) {
            if (frame % take.blockFrames == 0) {
                take.power.push_back(0);
                take.peak.push_back(0);
            }
            while (slice < count && (slice + 1) * total / count <= frame) {
                ++slice;
            }
            const std::int64_t blockStart = frame / take.blockFrames * take.blockFrames;
            const std::int64_t length = std::min(take.blockFrames, take.frames - blockStart);
            bool hasClipped = false;
            for (std::vector<float>& plane : planes) {
                float& sample = plane[static_cast<std::size_t>(frame)];
                sample = std::isnan(sample) ? 0 : std::abs(sample) > 0x1p20F ? std::copysign(1.0F, sample) : sample;
                const float magnitude = std::abs(sample);
                take.power.back() += double{sample} * double{sample} / static_cast<double>(length * channels);
                take.peak.back() = std::max(take.peak.back(), magnitude);
                const bool isClipped = magnitude >= 0.999F;
                take.clippedSamples += isClipped ? 1 : 0;
                hasClipped = hasClipped || isClipped;
                if (slice < count) {
                    float& peak = take.overview.peaks[static_cast<std::size_t>(slice)];
                    peak = std::max(peak, std::min(1.0F, magnitude));
                    take.overview.clippedSamples += isClipped ? 1 : 0;
                    clipped[static_cast<std::size_t>(slice)] = clipped[static_cast<std::size_t>(slice)] || isClipped;
                }
            }
            if (hasClipped) {
                if (take.clipRuns.empty() || frame - take.clipRuns.back().end > gap) {
                    take.clipRuns.push_back({frame, frame});
                }
                take.clipRuns.back().end = frame + 1;
            }
        }
        for (std::size_t index = 0; index < clipped.size(); ++index) {
            if (clipped[index]) {
                take.overview.clips.push_back(static_cast<std::int64_t>(index));
            }
        }
        take.loudness = sampleRate < 4000 ? std::nullopt : test::plainLoudness(sampleRate, planes);
        return take;
    }

    void expectEqual(const ScannedTake& found, const ScannedTake& expected)
    {
        EXPECT_EQ(found.frames, expected.frames);
        EXPECT_EQ(found.blockFrames, expected.blockFrames);
        EXPECT_EQ(found.peak, expected.peak);
        EXPECT_EQ(found.clipRuns, expected.clipRuns);
        EXPECT_EQ(found.clippedSamples, expected.clippedSamples);
        EXPECT_EQ(found.overview, expected.overview);
        EXPECT_EQ(found.loudness.has_value(), expected.loudness.has_value());
        EXPECT_NEAR(found.loudness.value_or(0), expected.loudness.value_or(0), 1e-9);
        ASSERT_EQ(found.power.size(), expected.power.size());
        for (std::size_t block = 0; block < found.power.size(); ++block) {
            EXPECT_NEAR(found.power[block], expected.power[block], 1e-12 * expected.power[block]) << "block " << block;
        }
    }

    /// Scans in every way there is, and holds the results against the plain definition and against each other.
    void expectPlainResult(double sampleRate, const Planes& planes, std::int64_t statedFrames)
    {
        const ScannedTake plain = plainScan(sampleRate, planes, statedFrames);
        std::optional<ScannedTake> first;
        for (const BlockKernel* const kernel : {&BlockKernel::baseline(), BlockKernel::wide()}) {
            for (const unsigned threads : {1U, 2U, 5U, 0U}) {
                if (kernel == nullptr) {
                    continue;
                }
                const Access access = threads > 0 ? Access::parallel : Access::inOrder;
                SCOPED_TRACE(testing::Message() << kernel->name << ", threads " << threads);
                MemoryTake take(sampleRate, planes, access);
                take.setStatedFrames(statedFrames);
                const auto found = scanTake(
                    take, clipGap, slices, {}, {.kernel = kernel, .threads = threads, .segmentBlocks = segmentBlocks});
                ASSERT_TRUE(found);
                expectEqual(*found, plain);
                first = first ? first : *found;
                EXPECT_EQ(found->power, first->power);
                if (access == Access::parallel && kernel == &BlockKernel::baseline()) {
                    EXPECT_EQ(found->loudness, first->loudness);
                }
            }
        }
    }

}  // namespace

TEST(PassTest, FindsTheSameAsThePlainDefinitionWithEveryKernelAndOnAnyThreads)
{
    const struct {
        double sampleRate;
        std::size_t channels;
        std::size_t frames;
    } takes[]{{48'000, 2, 100'123}, {44'100, 6, 50'000}, {11'025, 1, 20'000}, {22'050, 3, 22'050}, {1000, 2, 3333},
        {8, 2, 100}, {48'000, 1, 720}, {48'000, 2, 1}, {48'000, 2, 0}};
    for (const auto& [sampleRate, channels, frames] : takes) {
        SCOPED_TRACE(testing::Message() << sampleRate << " Hz, " << channels << " channels, " << frames << " frames");
        Planes planes = noise(channels, frames);
        // Runs over all borders, and in the last channel something that no file should hold.
        for (std::size_t frame = frames / 8; frame < frames; frame += 1 + frame / 9) {
            planes[frame % channels][frame] = frame % 2 == 0 ? 1.3F : -0.999F;
            planes.back()[frame / 2] = std::numeric_limits<float>::quiet_NaN();
            planes.back()[frame / 3] = -std::numeric_limits<float>::infinity();
            planes.back()[frame / 4] = frame % 2 == 0 ? 1e25F : 0x1p20F;
        }
        expectPlainResult(sampleRate, planes, static_cast<std::int64_t>(frames));
    }
}

TEST(PassTest, JoinsClippedFramesAcrossTheBordersOfSegments)
{
    constexpr std::size_t sampleRate = 8000;
    constexpr std::size_t border = segmentBlocks * sampleRate / 100;
    constexpr std::size_t gap = sampleRate / 20;
    const float belowClipping = std::nextafter(0.999F, 0.0F);
    Planes planes(2, std::vector<float>(5 * border, 0.1F));
    const auto clip = [&](std::size_t frame) { planes[0][frame] = planes[1][frame] = -0.999F; };
    clip(border - 1);
    clip(border);
    clip(2 * border - 1);
    clip(2 * border + gap);
    clip(3 * border - 1);
    clip(3 * border + gap + 1);
    planes[0][4 * border] = belowClipping;

    MemoryTake take(sampleRate, planes);
    const auto found = scanTake(take, clipGap, slices, {}, {.segmentBlocks = segmentBlocks});
    ASSERT_TRUE(found);
    const auto run = [](std::size_t start, std::size_t end) {
        return FrameRun{static_cast<std::int64_t>(start), static_cast<std::int64_t>(end)};
    };
    EXPECT_EQ(found->clipRuns,
        (std::vector{run(border - 1, border + 1), run(2 * border - 1, 2 * border + gap + 1),
            run(3 * border - 1, 3 * border), run(3 * border + gap + 1, 3 * border + gap + 2)}));
    EXPECT_EQ(found->clippedSamples, 12);
    expectPlainResult(sampleRate, planes, 5 * border);
}

TEST(PassTest, EndsWhereTheAudioEnds)
{
    const Planes planes = noise(2, 50'000);
    for (const std::int64_t stated : {50'001, 61'000, 200'000}) {
        SCOPED_TRACE(stated);
        expectPlainResult(48'000, planes, stated);
    }
    // Only a decoder may turn out to hold more than it said.
    MemoryTake longer(48'000, planes, Access::inOrder);
    longer.setStatedFrames(30'000);
    const auto found = scanTake(longer, clipGap, slices, {}, {.segmentBlocks = segmentBlocks});
    ASSERT_TRUE(found);
    expectEqual(*found, plainScan(48'000, planes, 30'000));
}

TEST(PassTest, RefusesATakeOfYears)
{
    // What a damaged rate makes of an ordinary one, or a damaged length.
    MemoryTake take(48'000, noise(2, 100));
    take.setStatedFrames(std::int64_t{1} << 40);
    EXPECT_FALSE(scanTake(take, clipGap, slices));
}

TEST(PassTest, StaysExactThroughSilenceAfterSound)
{
    // Long enough for filters that are left alone to reach the smallest numbers there are.
    Planes planes = noise(2, 48'000);
    planes[0].resize(200'000);
    planes[1].resize(200'000, 1e-40F);
    expectPlainResult(48'000, planes, 200'000);
}

TEST(PassTest, TellsHowFarItIsAndStopsWhenItIsTold)
{
    for (const Access access : {Access::parallel, Access::inOrder}) {
        MemoryTake take(48'000, noise(2, 100'000), access);
        std::vector<double> parts;
        int asked = 0;
        const TakeAnalysis::Progress progress{
            .cancelled = [&asked] { return ++asked > 12; },
            .advanced = [&parts](double part) { parts.push_back(part); },
        };
        const auto stopped = scanTake(take, clipGap, slices, progress, {.threads = 2, .segmentBlocks = segmentBlocks});
        ASSERT_FALSE(stopped);
        EXPECT_EQ(errorText(stopped.error()), u"cancelled"_s);
        EXPECT_LE(asked, 15) << "soon";

        MemoryTake again(48'000, noise(2, 100'000), access);
        asked = -1'000'000;
        parts.clear();
        ASSERT_TRUE(scanTake(again, clipGap, slices, progress, {.threads = 2, .segmentBlocks = segmentBlocks}));
        EXPECT_TRUE(std::ranges::is_sorted(parts));
        EXPECT_EQ(parts.back(), 1);

        MemoryTake broken(48'000, noise(2, 100'000), access);
        broken.setBrokenFrame(70'000);
        const auto failed = scanTake(broken, clipGap, slices, {}, {.segmentBlocks = segmentBlocks});
        ASSERT_FALSE(failed);
        EXPECT_EQ(errorText(failed.error()), u"broken"_s);
    }
}

TEST_F(AnalysisLoadTest, OnePassOverTheFileFillsBothCaches)
{
    const SampleTakes::Plan plan{.start = {QDate(2026, 3, 7), QTime(22, 0)}, .seconds = 90, .clips = 3, .seed = 5};
    const auto paths = SampleTakes::write({&plan, 1}, m_sandbox.path(u"takes"_s), QTimeZone::utc());
    ASSERT_TRUE(paths);
    const std::optional<Take> take = Takes::describe(paths->front());
    ASSERT_TRUE(take);

    const auto analysis = TakeAnalysis::load(*take, {});
    ASSERT_TRUE(analysis);
    EXPECT_EQ(analysis->seconds, 90);
    EXPECT_EQ(analysis->rmsDB.size(), 90U);
    EXPECT_FALSE(analysis->loudness) << "there is none at 1 kHz";
    EXPECT_GT(analysis->clippedSamples, 0);
    const auto overview = TakeOverview::compute(take->path);
    ASSERT_TRUE(overview);
    EXPECT_EQ(overview->peaks.size(), 600U);
    EXPECT_EQ(overview->clippedSamples, analysis->clippedSamples);

    ASSERT_TRUE(QFile::remove(take->path));
    EXPECT_EQ(TakeAnalysis::load(*take, {}), analysis);
    EXPECT_EQ(TakeOverview::load(*take), overview);
}

TEST_F(AnalysisLoadTest, AnOverviewThatIsKeptStaysAndOneThatIsMissingIsKept)
{
    const SampleTakes::Plan plan{.start = {QDate(2026, 3, 7), QTime(22, 0)}, .seconds = 20};
    const auto paths = SampleTakes::write({&plan, 1}, m_sandbox.path(u"takes"_s), QTimeZone::utc());
    ASSERT_TRUE(paths);
    const std::optional<Take> take = Takes::describe(paths->front());
    ASSERT_TRUE(take);
    const QString file = TakeOverview::cacheURL(*take, TakeOverview::cacheFolder());

    test::Sandbox::writeFile(file, "kept");
    ASSERT_TRUE(TakeAnalysis::load(*take, {}));
    EXPECT_EQ(test::Sandbox::readFile(file), "kept");
    const auto computed = TakeOverview::load(*take);
    ASSERT_TRUE(computed) << "a damaged one is as good as none";
    EXPECT_EQ(TakeOverview::fromJsonText(test::Sandbox::readFile(file)), computed);
}

}  // namespace vantiro
