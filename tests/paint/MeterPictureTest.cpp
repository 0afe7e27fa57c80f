// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/MeterPainter.h"
#include "app/paint/Palette.h"
#include "app/paint/StripPainter.h"

#include <gtest/gtest.h>

#include <vector>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    constexpr MeterPainter::Form normal{.width = 288, .segments = 100};

}  // namespace

TEST(MeterPainter, LightsCellsByTheScale)
{
    struct Case {
        float levelDB;
        int lit;
    };
    for (const auto& test :
        {Case{-90, 0}, Case{-60, 0}, Case{-30, 25}, Case{-10, 69}, Case{-6, 81}, Case{0, 100}, Case{3, 100}}) {
        const auto shown = MeterPainter::shown(normal, {.left = test.levelDB, .holdRight = test.levelDB});
        EXPECT_EQ(shown.sides[0].lit, test.lit) << test.levelDB;
        EXPECT_EQ(shown.sides[1].lit, 0);
        EXPECT_EQ(shown.sides[1].hold.has_value(), test.levelDB > meterFloorDB);
    }
    EXPECT_EQ(MeterPainter::shown(normal, {.holdLeft = -6}).sides[0].hold, 220) << "0.81 of 272 points";
}

TEST(MeterPainter, PaintsAsManyLitCells)
{
    MeterPainter painter;
    const auto litColumns = [&painter](float levelDB) {
        const auto painted = painter.picture(
            {.size = MeterPainter::Size::compact, .width = 288, .segments = 48}, {.left = levelDB, .right = levelDB});
        const int row = 3 - painted.origin.y();
        int lit = 0;
        for (int x = 0; x < painted.image.width(); ++x) {
            lit += painted.image.pixelColor(x, row).alpha() > 200 ? 1 : 0;
        }
        return lit;
    };
    const int whole = litColumns(0);
    EXPECT_GT(whole, 100);
    EXPECT_NEAR(litColumns(-30), 0.25 * whole, 3);
    EXPECT_EQ(litColumns(-60), 0);
}

TEST(MeterPainter, SaysTheHigherPeak)
{
    struct Case {
        MeterLevels levels;
        QString text;
    };
    for (const auto& test : {Case{{}, u"No signal"_s}, Case{{.holdLeft = -12.34F, .holdRight = -9}, u"Peak  -9.0 dB"_s},
             Case{{.holdLeft = -0.04F}, u"Peak  0.0 dB"_s}, Case{{.clipped = true}, u"Clipped"_s}}) {
        EXPECT_EQ(MeterPainter::readout(test.levels), test.text);
    }
    EXPECT_EQ(MeterPainter::spoken({.left = -12.4F, .right = -0.2F}), u"Left -12, right 0 decibels"_s);
    EXPECT_TRUE(MeterPainter::shown({.size = MeterPainter::Size::compact, .width = 200}, {}).readout.isEmpty());
}

TEST(StripPainter, ShowsTheNewestValueAtTheRight)
{
    std::vector<float> history(600, meterFloorDB);
    history.back() = 0;
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const QImage strip = StripPainter().picture({528, 52}, history, ratio);
        ASSERT_EQ(strip.size(), (QSizeF(528, 52) * ratio).toSize());
        const int pitch = ratio > 1.5 ? 2 : 1;
        EXPECT_EQ(strip.pixelColor(strip.width() - pitch, strip.height() / 4), palette::red) << ratio;
        EXPECT_EQ(strip.pixelColor(strip.width() / 2, strip.height() / 4).alpha(), 0) << ratio;
    }
    EXPECT_TRUE(StripPainter().picture({0, 52}, history, 1).isNull());
}

}  // namespace vantiro
