// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckGeometry.h"
#include "app/paint/LedRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantiro {

namespace {

    using LevelScale::Tone;

    double distance(QPointF one, QPointF other)
    {
        return std::hypot(one.x() - other.x(), one.y() - other.y());
    }

}  // namespace

TEST(LevelScale, SpreadsTheHotEnd)
{
    struct Case {
        double levelDB;
        double fraction;
    };
    for (const auto& test : {Case{-90, 0}, Case{-60, 0}, Case{-30, 0.25}, Case{-10, 0.6944444}, Case{-6, 0.81},
             Case{-3, 0.9025}, Case{0, 1}, Case{4, 1}}) {
        EXPECT_NEAR(LevelScale::fraction(test.levelDB), test.fraction, 1e-6) << test.levelDB;
        EXPECT_NEAR(LevelScale::levelAt(test.fraction), std::clamp(test.levelDB, -60.0, 0.0), 1e-4);
    }
    EXPECT_EQ(LevelScale::levelAt(1.5), 0);
}

TEST(LevelScale, ClassesBeginAtTheirLevel)
{
    struct Case {
        double levelDB;
        Tone tone;
    };
    for (const auto& test :
        {Case{-60, Tone::quiet}, Case{-10.01, Tone::quiet}, Case{-10, Tone::good}, Case{-3.01, Tone::good},
            Case{-3, Tone::warning}, Case{-0.51, Tone::warning}, Case{-0.5, Tone::clip}, Case{1, Tone::clip}}) {
        EXPECT_EQ(LevelScale::toneOf(test.levelDB), test.tone) << test.levelDB;
    }
}

TEST(LedRing, ClimbsFromTheBottomOnBothSides)
{
    const auto lowest = LedRing::segment(LedRing::Side::left, 0);
    EXPECT_NEAR(lowest.start, 96, 1e-9);
    EXPECT_NEAR(lowest.end(), 98.576, 1e-9);
    EXPECT_NEAR(LedRing::segment(LedRing::Side::left, 47).end(), 96 + 168 - 0.924, 1e-9);
    for (int i = 0; i < LedRing::segmentCount; ++i) {
        const auto left = LedRing::segment(LedRing::Side::left, i);
        const auto right = LedRing::segment(LedRing::Side::right, i);
        EXPECT_NEAR(left.start, 180 - right.end(), 1e-9) << i;
        EXPECT_NEAR(left.span, right.span, 1e-9) << i;
    }
}

TEST(LedRing, LightsSegmentsByTheScale)
{
    struct Case {
        double levelDB;
        std::optional<int> last;
    };
    for (const auto& test : {Case{-90, {}}, Case{-60, {}}, Case{std::numeric_limits<double>::quiet_NaN(), {}},
             Case{-59.9, 0}, Case{-30, 11}, Case{-29.9, 12}, Case{-10, 33}, Case{-6, 38}, Case{0, 47}, Case{6, 47}}) {
        EXPECT_EQ(LedRing::lastLit(test.levelDB), test.last) << test.levelDB;
    }
    const auto lit = LedRing::lit(-30, -10);
    EXPECT_TRUE(lit.contains(11));
    EXPECT_FALSE(lit.contains(12));
    EXPECT_TRUE(lit.contains(33));
    EXPECT_FALSE(LedRing::lit(-60, -60).contains(0));
}

TEST(LedRing, SegmentsHaveTheColourOfTheirLevel)
{
    struct Case {
        int index;
        Tone tone;
    };
    for (const auto& test : {Case{0, Tone::quiet}, Case{32, Tone::quiet}, Case{33, Tone::good}, Case{42, Tone::good},
             Case{43, Tone::warning}, Case{46, Tone::warning}, Case{47, Tone::clip}}) {
        EXPECT_EQ(LedRing::toneOf(test.index), test.tone) << test.index;
    }
}

TEST(LedRing, SweepTrailsItsHead)
{
    for (const double seconds : {0.6, 0.6 + 2 * LedRing::sweepSeconds}) {
        const auto pieces = LedRing::sweep(seconds);
        EXPECT_NEAR(pieces.front().arc.end(), 90, 1e-6);
        EXPECT_NEAR(pieces.front().opacity, 0.7, 1e-9);
        EXPECT_NEAR(pieces.back().arc.start, 90 - 14 * 5, 1e-6);
        EXPECT_NEAR(pieces.back().opacity, 0.05, 1e-9);
    }
}

TEST(DeckGeometry, FitsTheAreaWithItsMiddle)
{
    struct Case {
        QRectF area;
        double size;
        QPointF origin;
    };
    for (const auto& test : {Case{{0, 0, 448, 352}, 352, {26.88, 0}}, Case{{10, 20, 224, 900}, 200, {10, 370}},
             Case{{0, 0, -5, 10}, 0, {-2.5, 5}}}) {
        const auto deck = DeckGeometry::fitted(test.area);
        EXPECT_NEAR(deck.size, test.size, 1e-9);
        EXPECT_NEAR(distance(deck.origin, test.origin), 0, 1e-9) << deck.origin.x() << ' ' << deck.origin.y();
    }
    const auto snapped = DeckGeometry{.origin = {26.88, 0.3}, .size = 351.9}.snapped(1.5);
    EXPECT_NEAR(snapped.origin.x() * 1.5, 40, 1e-9);
    EXPECT_NEAR(snapped.centre().x() * 1.5, 40 + 263, 1e-9);
}

TEST(DeckGeometry, MeasuresFollowFromTheSize)
{
    const DeckGeometry deck{.origin = {3, 5}, .size = 1000};
    EXPECT_NEAR(deck.ringRadius(), 392, 1e-9);
    EXPECT_NEAR(deck.recordRadius(), 347, 1e-9);
    EXPECT_NEAR(deck.innerGrooveRadius(), 233, 1e-9);
    EXPECT_EQ(deck.pivot(), QPointF(1018, 110));
}

TEST(DeckGeometry, ArmSwingsFromItsRestOntoTheFirstGroove)
{
    const DeckGeometry deck{.origin = {3, 5}, .size = 1000};
    EXPECT_NEAR(distance(deck.armTip(0), deck.pivot() + QPointF(0, 470)), 0, 1e-6);
    EXPECT_NEAR(distance(deck.armTip(1), deck.centre()), 317, 1e-6);
    EXPECT_LT(deck.armTip(1).x(), deck.pivot().x());
    EXPECT_GT(deck.armTip(1).y(), deck.pivot().y());
    EXPECT_NEAR(deck.armAngle(0.5), (deck.armAngle(0) + deck.armAngle(1)) / 2, 1e-9);
}

}  // namespace vantiro
