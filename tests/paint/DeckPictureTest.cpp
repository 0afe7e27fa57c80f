// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckPainter.h"
#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <QFontInfo>
#include <QGuiApplication>

#include <gtest/gtest.h>

#include <memory>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// Words need an application, though no screen.
    class DeckPictureTest : public ::testing::Test {
    protected:
        static void SetUpTestSuite()
        {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            static int count = 1;
            static char name[] = "test";
            static char* arguments[] = {name, nullptr};
            s_app = std::make_unique<QGuiApplication>(count, arguments);
        }
        static void TearDownTestSuite() { s_app.reset(); }

        static inline std::unique_ptr<QGuiApplication> s_app;
    };

    QColor colourAt(const QImage& image, QPointF point)
    {
        return image.pixelColor((point * image.devicePixelRatio()).toPoint());
    }

    bool isNear(const QColor& one, const QColor& other)
    {
        constexpr int tolerance = 24;
        return std::abs(one.red() - other.red()) < tolerance && std::abs(one.green() - other.green()) < tolerance
            && std::abs(one.blue() - other.blue()) < tolerance;
    }

}  // namespace

TEST(DeckBitmap, PaintsOnlyWhatChanged)
{
    int painted = 0;
    const auto paint = [&](QPainter& painter) {
        ++painted;
        painter.fillRect(QRectF(-100, -100, 200, 200), palette::lime);
    };
    DeckBitmap bitmap;
    const DeckBitmap::Subject first{.key = u"take 7"_s, .area = {0.2, 0, 10, 10}, .ratio = 1.5};
    const QImage* image = bitmap.picture(first, paint);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->size(), QSize(16, 15)) << "whole device pixels";
    bitmap.picture(first, paint);
    EXPECT_EQ(painted, 1);
    for (const auto& other : {DeckBitmap::Subject{.key = u"take 8"_s, .area = first.area, .ratio = 1.5},
             DeckBitmap::Subject{.key = u"take 8"_s, .area = first.area, .ratio = 2},
             DeckBitmap::Subject{.key = u"take 8"_s, .area = {0, 0, 20, 10}, .ratio = 2}}) {
        const int before = painted;
        bitmap.picture(other, paint);
        EXPECT_EQ(painted, before + 1);
    }
    EXPECT_EQ(bitmap.picture({.key = u"take 8"_s, .area = {0, 0, 1e6, 10}}, paint), nullptr);
    EXPECT_NE(bitmap.picture(first, paint), nullptr) << "tries again";
}

TEST_F(DeckPictureTest, TypefaceIsOursAndItsDigitsStandStill)
{
    ASSERT_TRUE(Typeface::install());
    QFont font(Typeface::family());
    font.setWeight(QFont::DemiBold);
    EXPECT_EQ(QFontInfo(font).family(), Typeface::family());
    EXPECT_EQ(QFontInfo(font).weight(), QFont::DemiBold);

    const Typeface::Style style{.size = 100, .weight = QFont::Medium};
    const auto lastDigit = [&](const QString& text) {
        const auto all = Typeface::tabular(text, style, {}, Typeface::Align::left).boundingRect();
        return all.right();
    };
    EXPECT_NEAR(lastDigit(u"11:18"_s), lastDigit(u"00:08"_s), 1e-6);
    EXPECT_EQ(Typeface::printed(u"PEAK -9.4 dB - x"_s), u"PEAK −9.4 dB - x"_s);
}

TEST_F(DeckPictureTest, ShowsLevelsArmAndLampsInTheirPlaces)
{
    constexpr QRectF plate(0, 0, 440, 366);
    for (const double ratio : {1.0, 1.5, 2.0}) {
        QImage image((plate.size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        const auto deck = DeckGeometry::fitted(plate.adjusted(7, 7, -7, -7)).snapped(ratio);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        DeckPainter().draw(painter,
            {.plate = plate,
                .geometry = deck,
                .ratio = ratio,
                .readout = {.state = {.kind = DeckState::Kind::recording},
                    .levels = {.left = -30, .right = -6, .holdLeft = -0.1F, .holdRight = -6},
                    .clock = u"00:00"_s},
                .history = {},
                .pose = 1},
            DeckMotion::posed(1));
        painter.end();

        struct Case {
            LedRing::Side side;
            int segment;
            std::optional<QColor> lit;
        };
        for (const auto& test : {Case{LedRing::Side::left, 11, palette::quiet}, Case{LedRing::Side::left, 14, {}},
                 Case{LedRing::Side::left, 47, palette::red}, Case{LedRing::Side::right, 14, palette::quiet},
                 Case{LedRing::Side::right, 38, palette::lime}, Case{LedRing::Side::right, 41, {}}}) {
            const auto arc = LedRing::segment(test.side, test.segment);
            const QColor found = colourAt(image, deck.around(radians(arc.start + arc.span / 2), 0.392));
            if (test.lit) {
                EXPECT_TRUE(isNear(found, *test.lit)) << test.segment << ' ' << found.name().toStdString();
            } else {
                EXPECT_LT(found.green(), 80) << test.segment;
            }
        }
        const QColor rest = colourAt(image, deck.pivot() + QPointF(deck.of(0.0265), deck.of(0.287)));
        EXPECT_LT(rest.green(), 60) << "the arm has left its rest";
        const QColor underArm = colourAt(image, deck.armTip(1));
        EXPECT_GT(underArm.red(), underArm.green() + 30) << "the needle's lamp";
        EXPECT_EQ(image.pixelColor(image.width() / 2, image.height() - 4).alpha(), 255);
    }
}

}  // namespace vantiro
