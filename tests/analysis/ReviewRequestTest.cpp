// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/ReviewRequest.h"

#include <QJsonDocument>
#include <QLocale>

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using Moment = TakeAnalysis::Moment;
    using Kind = Moment::Kind;

    TakeAnalysis reviewedAnalysis()
    {
        return {
            .seconds = 3599.96,
            .sampleRate = 48'000,
            .channels = 2,
            .rmsDB = {-20, -60, -120, -10.06F, -15.04F, -61},
            .peakDB = {},
            .clips = {},
            .clippedSamples = 0,
            .silences = {{40, 2.5}},
            .loudness = -14.25,
            .moments = {{Kind::jump, 0, 30, std::nullopt, -20, -20, -8, 0},
                {Kind::clip, 12.345, 0.001, -18.24F, -3, -17.9F, -0.04F, 0.001},
                {Kind::drop, 20, 3, -18, -30, -18, -25, 0}, {Kind::silence, 40, 2.5, -18, -120, std::nullopt, -90, 0},
                {Kind::jump, 50, 30, -18.02F, -17.98F, -12, -8, 0}},
        };
    }

    std::vector<double> starts(const ReviewRequest& request)
    {
        std::vector<double> times;
        for (const auto& moment : request.moments) {
            times.push_back(moment.start);
        }
        return times;
    }

    const char* const golden =
        R"({"applies":{"plannedBreak":["silence"],"roughness":["clip","drop","jump"]},"moments":[)"
        R"({"duration":30,"facts":"At 0.00 s of a 3600.0 s take, the level falls from nothing (edge of the take) to )"
        R"(-20.0 dBFS and holds for 30.00 s. After that it is -20.0 dBFS.","id":1,"kind":"jump","levelAfterDB":-20,)"
        R"("levelDuringDB":-20,"peakDB":-8,"start":0},)"
        R"({"changeDB":15.2,"clippedSeconds":0.001,"duration":0,"facts":"At 12.35 s of a 3600.0 s take, the signal )"
        R"(hits full scale for 0.00 s in total within 0.00 s. The level there is -3.0 dBFS, peak 0.0 dBFS. The level )"
        R"(is -18.2 dBFS before and -17.9 dBFS after.","id":2,"kind":"clip","levelAfterDB":-17.9,)"
        R"("levelBeforeDB":-18.2,"levelDuringDB":-3,"peakDB":0,"start":12.35},)"
        R"({"changeDB":-12,"duration":3,"facts":"At 20.00 s of a 3600.0 s take, the level falls from -18.0 dBFS to )"
        R"(-30.0 dBFS for 3.00 s, then returns to -18.0 dBFS.","id":3,"kind":"drop","levelAfterDB":-18,)"
        R"("levelBeforeDB":-18,"levelDuringDB":-30,"peakDB":-25,"start":20},)"
        R"({"changeDB":-102,"duration":2.5,"facts":"At 40.00 s of a 3600.0 s take, there is silence for 2.50 s. The )"
        R"(level is -18.0 dBFS before and nothing (edge of the take) after.","id":4,"kind":"silence",)"
        R"("levelBeforeDB":-18,"levelDuringDB":-120,"peakDB":-90,"start":40},)"
        R"({"changeDB":0,"duration":30,"facts":"At 50.00 s of a 3600.0 s take, the level falls from -18.0 dBFS to )"
        R"(-18.0 dBFS and holds for 30.00 s. After that it is -12.0 dBFS.","id":5,"kind":"jump","levelAfterDB":-12,)"
        R"("levelBeforeDB":-18,"levelDuringDB":-18,"peakDB":-8,"start":50}],"questions":{"plannedBreak":{"criteria":{)"
        R"("false":"Mistake: a deck ran out, a track ended with nothing next, or the signal was lost.",)"
        R"("true":"Planned: a deliberate pause, such as a break before a drop, or the quiet at the very start or end )"
        R"(of the take."},"instructions":"Is the silence in `moment` a planned break in the set, rather than a )"
        R"(mistake? Use `moment.start`, `moment.duration`, `take.seconds` and the levels before and after the )"
        R"(silence.","type":"noul"},"roughness":{"criteria":["Unnoticeable: a listener would hear nothing wrong.",)"
        R"("Slight: an attentive listener might notice a small bump in level.","Noticeable: most listeners would )"
        R"(hear a jolt, a dip in energy or a harsh edge.","Rough: it clearly sounds like a mistake, such as )"
        R"(distortion or a sudden loss of level.","Very rough: it spoils the mix for a listener, with long )"
        R"(distortion or the sound falling away."],"instructions":"How rough does `moment` sound to a listener of )"
        R"(this recorded DJ mix? Judge from `moment.facts` and the levels in `moment`, compared with )"
        R"(`take.typicalLevelDB`. Judge how it sounds, not the DJ's taste in music.","type":"score"}},)"
        R"("take":{"clipsPerHour":1,"deadAirSeconds":2.5,"loudnessLUFS":-14.3,"seconds":3600,)"
        R"("typicalLevelDB":-15},"version":1})";

}  // namespace

TEST(ReviewRequestTest, TheDocumentIsTheSameInEveryLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(ReviewRequest(reviewedAnalysis(), 5).json(), QByteArray(golden));
    QLocale::setDefault(before);
    // Slashes stay as they are.
    const auto question = JevQuestion::choice(u"a/b"_s, {{u"none"_s, u"None/\"both\""_s}});
    EXPECT_EQ(QJsonDocument(question.toJson()).toJson(QJsonDocument::Compact),
        R"({"criteria":{"none":"None/\"both\""},"instructions":"a/b","type":"choice"})");
}

TEST(ReviewRequestTest, KeepsTheWorstMomentsInOrderOfTime)
{
    // The drop counts 4, the clip 3.01, the silence 1.25, the second jump next to nothing, the first nothing.
    const std::vector<double> wanted[] = {{}, {20}, {12.35, 20}, {12.35, 20, 40}, {12.35, 20, 40, 50}};
    for (std::size_t limit = 0; limit < std::size(wanted); ++limit) {
        const ReviewRequest request(reviewedAnalysis(), static_cast<std::int64_t>(limit));
        EXPECT_EQ(starts(request), wanted[limit]);
        EXPECT_EQ(request.questions.size(), 2);
    }
    EXPECT_DEATH((void)ReviewRequest(reviewedAnalysis(), -1), "cannot keep");

    TakeAnalysis two;
    two.moments = {{Kind::drop, 1, 10, -18, -30, -18, 0, 0}, {Kind::drop, 20, 11, -18, -30, -18, 0, 0}};
    EXPECT_EQ(starts(ReviewRequest(two, 1)), std::vector<double>{1}) << "a drop counts for 10 seconds at most";
    EXPECT_EQ(ReviewRequest(two, 1).take, ReviewRequest::Summary()) << "a take without length or music";
}

TEST(ReviewRequestTest, ABatchHasTheQuestionsForItsMoment)
{
    const ReviewRequest request(reviewedAnalysis(), 5);
    const auto batches = request.batches();
    ASSERT_EQ(batches.size(), 5U);
    for (std::size_t i = 0; i < batches.size(); ++i) {
        EXPECT_EQ(batches[i].questions.keys(), QStringList(i == 3 ? u"plannedBreak"_s : u"roughness"_s));
        EXPECT_EQ(batches[i].state, (ReviewRequest::MomentState{request.take, request.moments[i]}));
    }
    EXPECT_EQ(batches[0].toJson().value(u"state"_s).toObject().keys(), QStringList({u"moment"_s, u"take"_s}));
}

TEST(JevQuestionTest, IsReadAsItWasWritten)
{
    const JevQuestion choice = JevQuestion::choice(u"Which?"_s, {{u"a"_s, u"A"_s}});
    for (const JevQuestion& question :
        {JevQuestion::score(u"How?"_s, {u"b"_s, u"a"_s}), JevQuestion::noul(u"Is it?"_s, u"yes"_s, u"no"_s), choice}) {
        EXPECT_EQ(JevQuestion::fromJson(question.toJson()), question);
        for (const QString& key : question.toJson().keys()) {
            QJsonObject object = question.toJson();
            object.insert(key, 1);
            EXPECT_FALSE(JevQuestion::fromJson(object)) << qPrintable(key);
        }
    }
    EXPECT_EQ(choice.toJson().keys(), QStringList({u"criteria"_s, u"instructions"_s, u"type"_s}));
}

}  // namespace vantiro
