// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Faceplate.h"
#include "app/qml/Surface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    class SurfacePictureTest : public testing::TestWithParam<double> { };

    /// The lightness at a place of the surface, in pixels from its corner.
    int lightnessAt(const Picture& picture, int x, int y)
    {
        return picture.image.pixelColor(QPoint(x, y) - picture.origin).value();
    }

}  // namespace

TEST_P(SurfacePictureTest, RaisedThingsCatchTheLightAboveAndMilledThingsBelow)
{
    const double ratio = GetParam();
    const int line = std::max(1, int(std::lround(ratio)));
    const int height = int(std::lround(30 * ratio));
    const int middle = int(50 * ratio);

    const Picture key = surfacePicture(QSizeF(100, 30), Surface::look(Surface::Key, Surface::State::rest), ratio);
    EXPECT_GT(lightnessAt(key, middle, 0), lightnessAt(key, middle, line) + 15);
    EXPECT_GT(lightnessAt(key, middle, line - 1), lightnessAt(key, middle, line) + 15);

    const Picture well = surfacePicture(QSizeF(100, 30), Surface::look(Surface::Well, Surface::State::rest), ratio);
    EXPECT_GT(well.image.pixelColor(QPoint(middle, height) - well.origin).alpha(), 10);
    EXPECT_EQ(well.image.pixelColor(QPoint(middle, -1) - well.origin).alpha(), 0);
}

TEST_P(SurfacePictureTest, EdgesStandOnPixels)
{
    const double ratio = GetParam();
    const Picture plate = surfacePicture(QSizeF(64, 40), Surface::look(Surface::Plate, Surface::State::rest), ratio);
    const int right = int(64 * ratio) - 1;
    const int middle = int(20 * ratio);
    // The slot is darker than the plate right up to the edge.
    EXPECT_LT(lightnessAt(plate, -1, middle), 10);
    EXPECT_GT(lightnessAt(plate, 0, middle), 20);
    EXPECT_GT(lightnessAt(plate, right, middle), 20);
    EXPECT_LT(lightnessAt(plate, right + 1, middle), 10);
}

TEST_P(SurfacePictureTest, GrainIsAPixelASpeckAndTheSameEachTime)
{
    const QImage tile = Faceplate::grainTile(GetParam());
    EXPECT_EQ(tile.width(), int(128 * GetParam()));
    EXPECT_EQ(tile, Faceplate::grainTile(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Ratios, SurfacePictureTest, testing::Values(1, 1.5, 2));

TEST(CrossfadeTest, CoversBothPicturesAndIsNowhereThinnerThanThem)
{
    const SurfaceLook key = Surface::look(Surface::Key, Surface::State::rest);
    const SurfaceLook pressed = Surface::look(Surface::Key, Surface::State::pressed);
    const Picture from = surfacePicture(QSizeF(60, 24), key, 1);
    const Picture to = surfacePicture(QSizeF(60, 24), pressed, 1);
    const Picture half = crossfade(from, to, 0.5);
    EXPECT_EQ(half.origin, from.origin);
    EXPECT_GE(half.image.pixelColor(QPoint(30, 12) - half.origin).alpha(), 253);
    EXPECT_NEAR(lightnessAt(half, 30, 12), (lightnessAt(from, 30, 12) + lightnessAt(to, 30, 12)) / 2, 1);
}

}  // namespace vantiro
