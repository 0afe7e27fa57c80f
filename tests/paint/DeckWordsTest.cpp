// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckWords.h"

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using Kind = DeckState::Kind;

}  // namespace

TEST(DeckWords, CaptionGivesWayToWhatAPressWouldDo)
{
    struct Case {
        DeckState state;
        QString caption;
        QStringList hint;
    };
    const std::vector<Case> cases{
        {{.kind = Kind::noSource}, u"SETUP"_s, {u"SETUP"_s}},
        {{.kind = Kind::listening}, u"LISTENING"_s, {u"PRESS TO"_s, u"RECORD"_s}},
        {{.kind = Kind::ready}, u"READY"_s, {u"PRESS TO"_s, u"RECORD"_s}},
        {{.kind = Kind::starting}, u"STARTING"_s, {u"STARTING"_s}},
        {{.kind = Kind::recording}, u"REC"_s, {u"PRESS TO"_s, u"STOP"_s}},
        {{.kind = Kind::playing}, u"PLAYBACK"_s, {u"PRESS TO"_s, u"PAUSE"_s}},
        {{.kind = Kind::playing, .paused = true}, u"PAUSED"_s, {u"PRESS TO"_s, u"PLAY"_s}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(DeckWords::caption(test.state), test.caption);
        EXPECT_EQ(DeckWords::hintLines(test.state), test.hint);
        EXPECT_EQ(DeckWords::hint(test.state), test.hint.join(' '_L1));
    }
}

TEST(DeckWords, LevelCaptionTellsTheHigherPeak)
{
    struct Case {
        MeterLevels levels;
        QString text;
    };
    for (const auto& test : {Case{{}, u"NO SIGNAL"_s}, Case{{.left = -6}, u"NO SIGNAL"_s},
             Case{{.holdLeft = -9.44F, .holdRight = -10}, u"PEAK -9.4 dB"_s},
             Case{{.holdLeft = -60, .holdRight = 0}, u"PEAK 0.0 dB"_s}, Case{{.holdLeft = -0.04F}, u"PEAK 0.0 dB"_s},
             Case{{.holdLeft = -0.06F}, u"PEAK -0.1 dB"_s}, Case{{.clipped = true}, u"CLIPPED"_s}}) {
        EXPECT_EQ(DeckWords::levelCaption(test.levels), test.text);
    }
}

TEST(DeckWords, LabelNamesTheTake)
{
    EXPECT_EQ(DeckWords::label(7), u"VANTIRO  ·  TAKE 007  ·  33 RPM  ·  24 BIT  ·  "_s);
    EXPECT_EQ(DeckWords::label(1234), u"VANTIRO  ·  TAKE 1234  ·  33 RPM  ·  24 BIT  ·  "_s);
}

}  // namespace vantiro
