// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ClockWords.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace vantiro {

TEST(ClockWordsTest, CountsHoursOnlyOnceThereAreSome)
{
    using namespace Qt::Literals::StringLiterals;
    using Form = ClockWords::Form;
    using Kind = DeckState::Kind;
    const QString nothing = u"00:00 0:00 0:00:00"_s;
    for (const auto& [seconds, text] : {std::pair{-3.0, nothing}, {std::numeric_limits<double>::quiet_NaN(), nothing},
             {59.99, u"00:59 0:59 0:00:59"_s}, {3599.9, u"59:59 59:59 0:59:59"_s}, {3600, u"1:00:00 1:00:00 1:00:00"_s},
             {36'754, u"10:12:34 10:12:34 10:12:34"_s}}) {
        const QStringList all{ClockWords::time(seconds, Form::deck), ClockWords::time(seconds, Form::brief),
            ClockWords::time(seconds, Form::full)};
        EXPECT_EQ(all.join(u' '), text) << seconds;
    }
    const QDateTime now(QDate(2026, 5, 1), QTime(3, 0), Qt::UTC);
    EXPECT_EQ(ClockWords::ofDeck({.kind = Kind::recording, .since = now.addSecs(-3767)}, now), u"1:02:47");
    EXPECT_EQ(ClockWords::ofDeck({.kind = Kind::playing, .position = 61.5}, now), u"01:01");
    EXPECT_EQ(ClockWords::ofDeck({.kind = Kind::ready}, now), u"00:00");
}

}  // namespace vantiro
