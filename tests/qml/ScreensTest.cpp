// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/TakeRows.h"
#include "app/qml/WindowForm.h"

#include <gtest/gtest.h>

namespace vantiro {

TEST(WindowFormTest, KeepsTopAndMiddleAndStaysOnItsScreen)
{
    const QRect screen(0, 0, 1280, 800);
    struct Case {
        QRect now;
        QRect then;
    };
    for (const auto& [now, then] : {
             Case{{400, 100, 480, 580}, {180, 100, 920, 620}},
             Case{{10, 100, 480, 580}, {0, 100, 920, 620}},
             Case{{790, 100, 480, 580}, {360, 100, 920, 620}},
             // Half outside already, as its user wants it.
             Case{{-200, 100, 480, 580}, {-420, 100, 920, 620}},
         }) {
        EXPECT_EQ(WindowForm::placed(now, {920, 620}, screen), then);
    }
}

TEST(TakeRowsTest, SaysSizes)
{
    const QLocale english(QLocale::English);
    EXPECT_EQ(TakeRows::size(0, english), QStringLiteral("0 kB"));
    EXPECT_EQ(TakeRows::size(999'600, english), QStringLiteral("1.0 MB"));
    EXPECT_EQ(TakeRows::size(1'590'000'000, english), QStringLiteral("1.6 GB"));
    EXPECT_EQ(TakeRows::size(15'900'000'000, english), QStringLiteral("16 GB"));
}

}  // namespace vantiro
