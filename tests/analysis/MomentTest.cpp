// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockLevels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantiro {

namespace {

    using Run = TakeAnalysis::Run;
    using Moment = TakeAnalysis::Moment;
    using Kind = Moment::Kind;

    constexpr double music = -12;
    constexpr double low = -30;
    constexpr double nothing = -100;

    /// So many seconds at a level in dB.
    struct Part {
        double seconds;
        double level;
    };
    using Curve = std::vector<Part>;

    BlockLevels levels(const Curve& curve)
    {
        std::vector<double> power;
        std::vector<float> peak;
        for (const Part& part : curve) {
            const auto end = power.size() + static_cast<std::size_t>(std::lround(part.seconds * 100));
            power.resize(end, std::pow(10, part.level / 10));
            peak.resize(end, static_cast<float>(std::pow(10, part.level / 20)));
        }
        const double seconds = static_cast<double>(power.size()) / 100;
        return {std::move(power), std::move(peak), 0.01, seconds};
    }

    std::vector<Moment> moments(const BlockLevels& levels, const std::vector<Run>& clips = {})
    {
        return levels.findMoments(clips, levels.findSilences({}), {});
    }

    Curve slowFade()
    {
        Curve curve;
        for (int second = 0; second < 120; ++second) {
            curve.push_back({1, music - std::abs(60 - second) * 0.3});
        }
        return curve;
    }

    struct Expected {
        Kind kind;
        double start;
        double duration;
    };

    struct Case {
        const char* what;
        Curve curve;
        std::vector<Expected> moments;
    };

    const Case cases[] = {
        {"a take without audio", {}, {}},
        {"a short dip, whose return is no event of its own", {{20, music}, {5, low}, {70, music}},
            {{Kind::drop, 20, 5}}},
        {"a dip that is too short", {{20, music}, {1.48, low}, {70, music}}, {}},
        {"a dip that is just long enough", {{20, music}, {1.52, low}, {70, music}}, {{Kind::drop, 20, 1.52}}},
        {"a dip that is not deep enough", {{20, music}, {5, music - 5.9}, {70, music}}, {}},
        {"a dip that lasts is a change of level, and so is its return", {{20, music}, {40, low}, {70, music}},
            {{Kind::jump, 20, 30}, {Kind::jump, 60, 30}}},
        {"a rise that lasts until the end", {{20, low}, {10, music}}, {{Kind::jump, 20, 10}}},
        {"a burst", {{20, low}, {1, music}, {20, low}}, {}},
        {"a slow fade, in and out", slowFade(), {}},
        {"a change before there is a recent level", {{0.3, low}, {40, music}}, {}},
        {"the end of the set", {{20, music}, {59, low}}, {}},
        {"a fall long before the end", {{20, music}, {61, low}}, {{Kind::jump, 20, 30}}},
        {"a fall not so long before the end, if that is what remains of it", {{20, music}, {61, low}, {0.5, music}},
            {{Kind::jump, 20, 30}}},
        {"a pause", {{20, music}, {2, nothing}, {20, music}}, {{Kind::silence, 20, 2}}},
        {"a gap that is too short for a pause", {{20, music}, {1.99, nothing}, {20, music}}, {{Kind::drop, 20, 1.99}}},
        {"a pause within a dip", {{20, music}, {3, low}, {3, nothing}, {3.2, low}, {20, music}},
            {{Kind::silence, 23, 3}, {Kind::jump, 29.2, 20}}},
        {"the beginning out of silence, and the end", {{10, nothing}, {80, music}, {4, nothing}},
            {{Kind::silence, 0, 10}, {Kind::silence, 90, 4}}},
        {"a rise soon after a pause", {{20, music}, {5, nothing}, {2, low}, {20, music}}, {{Kind::silence, 20, 5}}},
        {"a rise some time after a pause", {{20, music}, {5, nothing}, {4, low}, {20, music}},
            {{Kind::silence, 20, 5}, {Kind::jump, 29, 20}}},
    };

}  // namespace

TEST(MomentTest, AccidentsAreFoundAndWhatIsMeantIsNot)
{
    for (const Case& example : cases) {
        SCOPED_TRACE(example.what);
        const auto found = moments(levels(example.curve));
        EXPECT_EQ(found.size(), example.moments.size());
        for (std::size_t i = 0; i < std::min(found.size(), example.moments.size()); ++i) {
            EXPECT_EQ(found[i].kind, example.moments[i].kind);
            EXPECT_NEAR(found[i].start, example.moments[i].start, 0.005);
            EXPECT_NEAR(found[i].duration, example.moments[i].duration, 0.015);
        }
    }
}

TEST(MomentTest, TheLevelsAreThoseAroundAMomentAndAbsentBeyondTheTake)
{
    const auto dip = moments(levels({{17, -50}, {3, music}, {40, low}, {3, -15}, {40, music}})).at(1);
    EXPECT_EQ(dip.kind, Kind::jump);
    EXPECT_NEAR(dip.levelBeforeDB.value(), music, 0.01);
    EXPECT_NEAR(dip.levelDuringDB, low, 0.01);
    EXPECT_NEAR(dip.levelAfterDB.value(), low, 0.01) << "a capped moment ends before the level returns";
    EXPECT_NEAR(dip.changeDB().value(), low - music, 0.01);
    EXPECT_EQ(dip.clippedSeconds, 0);

    const auto all = moments(levels({{5, nothing}}));
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].levelBeforeDB, std::nullopt);
    EXPECT_EQ(all[0].changeDB(), std::nullopt);
    EXPECT_EQ(all[0].levelAfterDB, std::nullopt);
    EXPECT_NEAR(all[0].peakDB, nothing, 0.01);
}

TEST(MomentTest, ClipsThatAreCloseAreOneMomentThatStandsFirst)
{
    const BlockLevels curve = levels({{20, music}, {3, nothing}, {20, music}});
    const auto found = moments(curve, {{10, 0.5}, {12, 0.25}, {14.25, 0.00001}, {20, 0.125}});
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found[0].id(), QStringLiteral("clip-10000"));
    EXPECT_EQ(found[0].duration, 2.25);
    EXPECT_EQ(found[0].clippedSeconds, 0.75) << "without the time between";
    EXPECT_EQ(found[1].id(), QStringLiteral("clip-14250")) << "just not close enough";
    EXPECT_NEAR(found[1].levelDuringDB, music, 0.01) << "of a whole block";
    EXPECT_EQ(found[2].id(), QStringLiteral("clip-20000"));
    EXPECT_EQ(found[3].id(), QStringLiteral("silence-20000"));
}

TEST(MomentTest, TheLevelOfEachSecondSurvivesABrokenSample)
{
    const double infinite = std::numeric_limits<double>::infinity();
    std::vector<double> power(150, 0.25);
    std::vector<float> peak(150, 0.5F);
    power[20] = infinite;
    power[30] = std::nan("");
    peak[30] = std::nanf("");
    peak[140] = 1;
    const BlockLevels curve(power, peak, 0.01, 1.5);
    using testing::ElementsAre, testing::FloatNear;
    EXPECT_THAT(curve.rmsPerSecond(), ElementsAre(FloatNear(-6.11F, 0.01F), FloatNear(-6.02F, 0.01F)));
    EXPECT_THAT(curve.peakPerSecond(), ElementsAre(FloatNear(-6.02F, 0.01F), 0));
    EXPECT_THAT(BlockLevels({}, {}, 0.01, 0).rmsPerSecond(), ElementsAre());
    EXPECT_EQ(BlockLevels({}, {}, 0.01, 0).peakDB(0, 1), -120);
}

}  // namespace vantiro
