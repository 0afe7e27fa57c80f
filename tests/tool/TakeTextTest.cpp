// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/words/Catalogue.h"
#include "tool/AnalysisText.h"
#include "tool/Arguments.h"
#include "tool/PracticeText.h"
#include "tool/ShapeBars.h"
#include "tool/ShapePicture.h"
#include "tool/ShapeText.h"
#include "tool/TakesText.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <array>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Moment = TakeAnalysis::Moment;
    using Kind = Moment::Kind;

    /// Counts have their forms only with the catalogue.
    class TakeText : public ::testing::Test {
    protected:
        TakeText() { installCatalogue(m_application); }

        int m_count = 1;
        std::array<char, 5> m_name{"test"};
        std::array<char*, 2> m_arguments{m_name.data(), nullptr};
        QCoreApplication m_application{m_count, m_arguments.data()};
    };

    TakeAnalysis analysisWith(std::vector<Moment> moments)
    {
        TakeAnalysis analysis;
        analysis.seconds = 3600;
        analysis.sampleRate = 48000;
        analysis.channels = 2;
        analysis.moments = std::move(moments);
        return analysis;
    }

    TakeOverview silentOverview(std::size_t slices)
    {
        return {.peaks = std::vector<float>(slices), .clips = {}};
    }

    using Operands = Arguments::Operands;

}  // namespace

TEST_F(TakeText, GivesASizeTheUnitThatItReadsBestIn)
{
    for (const auto& [bytes, text] :
        {std::pair(std::int64_t{0}, u"0 kB"_s), {4096, u"4 kB"_s}, {999'940, u"1000 kB"_s}, {999'960, u"1.0 MB"_s},
            {14'936'068, u"14.9 MB"_s}, {999'999'999, u"1.0 GB"_s}, {5'000'000'000'000'000, u"5000.0 TB"_s}}) {
        EXPECT_EQ(sizeText(bytes), text) << bytes;
    }
}

TEST_F(TakeText, SetsTakesInColumnsAndLetsNoNameSteerTheTerminal)
{
    const QDateTime evening(QDate(2026, 9, 5), QTime(22, 4), Qt::LocalTime);
    const Take usual{u"/t/a.caf"_s, evening, 2'000'000, 3725, 44100, 2};
    const Take odd{u"/t/\x1B[31mlong.wav"_s, QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC), 9000, 0, 96000, 6};
    const QStringList lines = takesText({.folder = u"/t"_s, .takes = {usual, odd}, .recordingPath = usual.path});
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], u"a.caf          Sat 5 Sep 2026  22:04  1:02:05  44,100 Hz  stereo      2.0 MB  ● recording"_s);
    EXPECT_EQ(lines[1], u"\uFFFD[31mlong.wav  date not known         0:00:00  96,000 Hz  6 channels    9 kB"_s);
    EXPECT_EQ(lines[3], u"2 takes, 1:02:05 in all, 2.0 MB, in /t"_s);
    EXPECT_EQ(takesText({.folder = u"/t"_s, .takes = {usual}}).last(), u"1 take, 1:02:05 in all, 2.0 MB, in /t"_s);
}

TEST_F(TakeText, ListsFewMomentsOneByOneAndOfManyTheWorstInTheirOrder)
{
    std::vector<Moment> moments;
    for (const double clipped : {0.004, 0.5, 0.001, 0.25}) {
        moments.push_back({.kind = Kind::clip,
            .start = 600.0 * static_cast<double>(moments.size() + 1),
            .duration = 1,
            .clippedSeconds = clipped});
    }
    QString text = analysisText(u"a.caf"_s, analysisWith(moments)).join(u'\n');
    EXPECT_TRUE(text.contains(u"Clipping  4 places, 4.0 an hour, 755 ms in all:\n            0:10:00  4 ms"_s))
        << qPrintable(text);
    EXPECT_TRUE(text.contains(u"0:30:00  1 ms at full scale"_s));
    moments.push_back({.kind = Kind::clip, .start = 3500, .duration = 3, .clippedSeconds = 2});
    text = analysisText(u"a.caf"_s, analysisWith(moments)).join(u'\n');
    EXPECT_TRUE(text.contains(u"Clipping  5 places, 5.0 an hour, 2.8 s in all, the worst of them:\n"
                              "            0:10:00  4 ms at full scale\n"
                              "            0:20:00  500 ms at full scale\n"
                              "            0:40:00  250 ms at full scale\n"
                              "            0:58:20  2.0 s at full scale\n"
                              "  Dead air  none"_s))
        << qPrintable(text);
    const std::size_t oneKind = moments.size();
    for (const Kind kind : {Kind::drop, Kind::silence, Kind::jump}) {
        for (std::size_t index = 0; index < oneKind; ++index) {
            moments.push_back({.kind = kind, .start = 700.0 * static_cast<double>(index), .duration = 5});
        }
    }
    const QStringList lines = analysisText(u"a.caf"_s, analysisWith(moments));
    EXPECT_EQ(lines.size(), 12);
    EXPECT_TRUE(lines.contains(u"            0:58:20  2.0 s at full scale"_s)) << qPrintable(lines.join(u'\n'));
    EXPECT_EQ(lines.filter(u"the worst of them"_s).size(), 4);
}

TEST_F(TakeText, TellsEachKindOfMomentWithWhatMatters)
{
    auto analysis = analysisWith({
        {.kind = Kind::drop, .start = 59.6, .duration = 3.96, .levelBeforeDB = -12, .levelDuringDB = -21.9F},
        {.kind = Kind::silence, .start = 120, .duration = 72, .levelDuringDB = -120},
        {.kind = Kind::jump, .start = 200, .duration = 30, .levelBeforeDB = -18, .levelDuringDB = -10},
        {.kind = Kind::jump, .start = 300, .duration = 30, .levelDuringDB = -10},
    });
    analysis.silences = {{.start = 120, .duration = 72}};
    analysis.peakDB = {-30, -0.04F, -3};
    analysis.loudness = -14.25;
    const QStringList lines = analysisText(u"a.caf"_s, analysis);
    EXPECT_EQ(lines,
        (QStringList{u"a.caf"_s, u"  Length    1:00:00, 48,000 Hz, stereo"_s, u"  Loudness  -14.3 LUFS"_s,
            u"  Peak      0.0 dB at 0:00:01"_s, u"  Clipping  none"_s, u"  Dead air  0:01:12 in 1 silence:"_s,
            u"            0:02:00  0:01:12"_s, u"  Drops     1:"_s, u"            0:01:00  -9.9 dB for 4.0 s"_s,
            u"  Jumps     2:"_s, u"            0:03:20  +8.0 dB, from -18.0 dB to -10.0 dB"_s,
            u"            0:05:00  to -10.0 dB"_s}))
        << qPrintable(lines.join(u'\n'));
    EXPECT_TRUE(analysisText(u"a.caf"_s, {}).join(u'\n').contains(u"Peak      none"_s)) << "an empty take";
}

TEST_F(TakeText, ShowsBreaksAndEveryClipHoweverNarrowThePictureIs)
{
    TakeOverview overview{.peaks = std::vector<float>(600, 0.5F), .clips = {0, 1, 299, 599}, .clippedSamples = 1234};
    std::fill(overview.peaks.begin() + 100, overview.peaks.begin() + 200, 0.0F);
    overview.peaks[299] = 1;
    const QStringList lines = shapeText(overview, 3600, 60, ClipMarks::row);
    EXPECT_EQ(lines,
        (QStringList{u"▼                            ▼                             ▼"_s,
            u"                             █                              "_s,
            u"                             █                              "_s,
            u"██████████          ████████████████████████████████████████"_s,
            u"██████████▁▁▁▁▁▁▁▁▁▁████████████████████████████████████████"_s,
            u"╵0:00:00       ╵0:15:00       ╵0:30:00       ╵0:45:00       "_s,
            u"Clipped in 3 places, 1,234 samples at full scale"_s}))
        << qPrintable(lines.join(u'\n'));
    EXPECT_EQ(shapeText(overview, 3600, 60, ClipMarks::colour).first(),
        QString(29, u' ') + u"\033[91m█\033[0m"_s + QString(30, u' '));
    for (const std::size_t slices : {0U, 1U, 7U}) {
        EXPECT_EQ(shapeText(silentOverview(slices), 0, 20, ClipMarks::row),
            (QStringList{QString(20, u'▁'), u"╵0:00:00            "_s, u"No clipping"_s}))
            << slices;
    }
}

TEST_F(TakeText, MarksTimeInRoundStepsHoweverLongTheTake)
{
    for (const auto& [seconds, step] :
        {std::pair(0.0, 1.0), {6.5, 1.0}, {3600.0, 600.0}, {36000.0, 7200.0}, {1e9, 86400.0 * 1654}}) {
        EXPECT_EQ(axisStep(seconds, 7), step) << seconds;
    }
}

TEST_F(TakeText, PaintsClippedPlacesRedInAPictureOfAnySize)
{
    const TakeOverview overview{.peaks = std::vector<float>(600, 1), .clips = {300}, .clippedSamples = 1};
    for (const auto& [width, height] : {std::pair(leastPictureWidth, leastPictureHeight), {1200, 240},
             {leastPictureWidth, 4000}, {4000, leastPictureHeight}}) {
        for (const TakeOverview& shape : {overview, silentOverview(0), silentOverview(3)}) {
            const Picture picture = shapePicture(shape, 60, width, height);
            bool hasRed = false;
            for (std::size_t at = 0; at + 2 < picture.pixels.size(); at += 3) {
                hasRed = hasRed || (picture.pixels[at] > 240 && picture.pixels[at + 1] < 100);
            }
            EXPECT_EQ(hasRed, !shape.clips.empty()) << width << " x " << height;
        }
    }
}

TEST_F(TakeText, SaysOfAWeekOnlyWhatItKnows)
{
    const WeekSummary good{
        .start = {}, .takes = 2, .seconds = 7200, .clips = 1, .deadAirSeconds = 4, .loudnessLUFS = -14};
    const WeekSummary bad{.start = {}, .takes = 1, .seconds = 3600, .clips = 3, .deadAirSeconds = 2};
    const QStringList lines = practiceText({}, 1, {.thisWeek = good, .lastWeek = bad});
    EXPECT_EQ(lines,
        (QStringList{u"Added 1 take to the log"_s, QString(), u"                    this week       last week"_s,
            u"  Sets                      2               1  +1"_s,
            u"  Average set          60 min          60 min  same"_s,
            u"  Clips           0.5 an hour     3.0 an hour  -2.5 an hour, better"_s,
            u"  Dead air        2 s an hour     2 s an hour  same"_s,
            u"  Loudness         -14.0 LUFS               -"_s}))
        << qPrintable(lines.join(u'\n'));
    const QDateTime noon(QDate(2026, 9, 5), QTime(12, 0), Qt::LocalTime);
    EXPECT_EQ(practiceText({.entries = {{.take = u"a.caf"_s, .recorded = noon}}}, 0, {}),
        QStringList(u"No sets this week or last. The log holds 1 set, of Sat 5 Sep 2026."_s));
    EXPECT_EQ(practiceText({}, 0, {}).size(), 1);
}

TEST(Arguments, TakeFilesAmongOptionsAndNoMoreThanTheCommandWants)
{
    const auto path = [](const QStringList& words, Operands operands) -> QString {
        const auto arguments = Arguments::parse(words, {u"--png"_s}, {u"--json"_s}, operands);
        return arguments ? arguments->path().value_or(u"none"_s) : u"refused"_s;
    };
    for (const auto& [words, operands, expected] : std::vector<std::tuple<QStringList, Operands, QString>>{
             {{u"/a/../b"_s, u"--json"_s}, Operands::one, u"/b"_s},
             {{u"--png"_s, u"/o"_s, u"/b"_s}, Operands::one, u"/b"_s},
             {{u"--"_s, u"/--json"_s}, Operands::atMostOne, u"/--json"_s},
             {{}, Operands::atMostOne, u"none"_s},
             {{}, Operands::one, u"refused"_s},
             {{QString()}, Operands::atMostOne, u"refused"_s},
             {{u"/a"_s, u"/b"_s}, Operands::one, u"refused"_s},
             {{u"/a"_s}, Operands::none, u"refused"_s},
             {{u"-j"_s}, Operands::one, u"refused"_s},
         }) {
        EXPECT_EQ(path(words, operands), expected) << qPrintable(words.join(u' '));
    }
}

}  // namespace vantiro
