// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/PracticeLog.h"

#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFileInfo>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using Change = WeeklyComparison::Change;

    using PracticeLogTest = test::SandboxTest;

    PracticeEntry entry(const QString& take, const char* recorded, double hours = 1, std::int64_t clips = 0)
    {
        return {
            .take = take,
            .recorded = QDateTime::fromString(QString::fromLatin1(recorded), Qt::ISODateWithMs).toUTC(),
            .seconds = hours * 3600,
            .clips = clips,
        };
    }

    QStringList takes(const PracticeLog& log)
    {
        QStringList names;
        for (const PracticeEntry& each : log.entries) {
            names.append(each.take);
        }
        return names;
    }

}  // namespace

TEST_F(PracticeLogTest, KeepsARatingThroughANewAnalysisAndForgetsDeletedTakes)
{
    PracticeLog log;
    log.record(entry(u"b.caf"_s, "2026-09-20T12:00:00Z"));
    log.record(entry(u"a.caf"_s, "2026-09-19T12:00:00Z"));
    EXPECT_EQ(takes(log), QStringList({u"a.caf"_s, u"b.caf"_s}));
    for (const auto& [given, kept] : {std::pair(9, 5), {0, 1}, {-3, 1}, {2, 2}}) {
        log.setStar(given, u"b.caf"_s);
        EXPECT_EQ(log.entries[1].star, kept);
    }
    log.setStar(4, u"c.caf"_s);

    PracticeEntry again = entry(u"b.caf"_s, "2026-09-18T12:00:00Z", 1, 7);
    log.record(again);
    ASSERT_EQ(takes(log), QStringList({u"b.caf"_s, u"a.caf"_s}));
    EXPECT_EQ(log.entries[0].star, 2);
    EXPECT_EQ(log.entries[0].clips, 7);
    again.star = 4;
    log.record(again);
    EXPECT_EQ(log.entries[0].star, 4);
    log.setStar(std::nullopt, u"b.caf"_s);
    EXPECT_EQ(log.entries[0].star, std::nullopt);

    log.keep({u"a.caf"_s, u"d.caf"_s});
    EXPECT_EQ(takes(log), QStringList(u"a.caf"_s));
}

TEST_F(PracticeLogTest, SurvivesInAFileOfAFixedShape)
{
    PracticeLog log;
    log.entries.push_back(entry(u"a.caf"_s, "2026-09-19T12:00:00.250Z", 0.5, 3));
    log.entries.push_back(entry(u"b.caf"_s, "2026-09-20T12:00:00Z"));
    log.entries[0].loudnessLUFS = -14.5;
    log.entries[0].star = 5;
    ASSERT_TRUE(log.save(m_sandbox.folder()));
    const QString file = m_sandbox.path(u".vantiro-practice.json"_s);
    EXPECT_TRUE(test::Sandbox::readFile(file).startsWith(R"({
    "entries": [
        {
            "clips": 3,
            "deadAirSeconds": 0,
            "loudnessLUFS": -14.5,
            "recorded": 1789819200.25,
            "seconds": 1800,
            "star": 5,
            "take": "a.caf"
        },
)")) << test::Sandbox::readFile(file).constData();
    EXPECT_EQ(PracticeLog::load(m_sandbox.folder()), log);

    test::Sandbox::writeFile(file, R"({"entries": [
        {"take": "b", "recorded": 2, "seconds": 1, "clips": 0, "deadAirSeconds": 0},
        {"take": "a", "recorded": 1, "seconds": 1, "clips": 0, "deadAirSeconds": 0}]})");
    EXPECT_EQ(takes(PracticeLog::load(m_sandbox.folder())), QStringList({u"a"_s, u"b"_s}));
}

TEST_F(PracticeLogTest, SetsABrokenFileAsideAndNeverLosesOne)
{
    EXPECT_EQ(PracticeLog::load(m_sandbox.folder()), PracticeLog());
    const QByteArray broken[] = {"", "[]", R"({"entries": [{"take": "a.caf", "star": 5}]})",
        R"({"entries": [{"take": "a", "recorded": 1e300, "seconds": 1, "clips": 0, "deadAirSeconds": 0}]})"};
    const QString names[] = {u".vantiro-practice.broken.json"_s, u".vantiro-practice.broken-2.json"_s,
        u".vantiro-practice.broken-3.json"_s, u".vantiro-practice.broken-4.json"_s};
    for (std::size_t i = 0; i < std::size(broken); ++i) {
        test::Sandbox::writeFile(m_sandbox.path(PracticeLog::fileName), broken[i]);
        const PracticeLog log = PracticeLog::load(m_sandbox.folder());
        EXPECT_EQ(log, (PracticeLog{.setAsideAs = names[i]}));
        EXPECT_TRUE(log.save(m_sandbox.folder()));
        EXPECT_EQ(test::Sandbox::readFile(m_sandbox.path(names[i])), broken[i]);
    }
}

TEST_F(PracticeLogTest, NeitherMovesNorReplacesAFileThatCouldNotBeRead)
{
    // A folder cannot be read as a file, not even by root.
    const QString path = m_sandbox.path(PracticeLog::fileName);
    ASSERT_TRUE(QDir().mkpath(path));
    const PracticeLog log = PracticeLog::load(m_sandbox.folder());
    ASSERT_TRUE(log.unread);
    EXPECT_TRUE(QFileInfo(path).isDir());
    const auto saved = log.save(m_sandbox.folder());
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error(), *log.unread);
    ASSERT_TRUE(QDir().rmdir(path));
    EXPECT_TRUE(log.save(m_sandbox.folder()));
}

TEST_F(PracticeLogTest, FollowsATakeToItsNewNameWithItsRating)
{
    const auto take = [](const QString& name, const PracticeEntry& like, int later = 0) {
        return Take{.path = u"/takes/"_s + name,
            .created = like.recorded.addSecs(later),
            .bytes = 0,
            .seconds = like.seconds,
            .sampleRate = 48'000,
            .channels = 2};
    };
    PracticeLog log;
    log.record(entry(u"kept.caf"_s, "2026-09-19T12:00:00Z"));
    log.record(entry(u"mix-2026-09-20_14-00-00.caf"_s, "2026-09-20T12:00:00Z"));
    log.record(entry(u"deleted.caf"_s, "2026-09-21T12:00:00Z"));
    log.setStar(5, u"mix-2026-09-20_14-00-00.caf"_s);
    const std::vector<PracticeEntry> before = log.entries;
    PracticeEntry longer = before[2];
    longer.seconds += 1;
    const Take files[]{take(u"copy of kept.caf"_s, before[0]), take(u"kept.caf"_s, before[0]),
        take(u"longer.caf"_s, longer), take(u"an hour later.caf"_s, before[2], 3600),
        take(u"Opening.caf"_s, before[1], 2)};
    EXPECT_EQ(log.followRenames(files), 1U);
    EXPECT_EQ(takes(log), QStringList({u"kept.caf"_s, u"Opening.caf"_s, u"deleted.caf"_s}));
    EXPECT_EQ(log.entries[1].star, 5);
    EXPECT_EQ(log.entries[1].recorded, before[1].recorded);
    EXPECT_EQ(log.followRenames(files), 0U);
}

TEST_F(PracticeLogTest, AWeekBeginsWhereTheCalendarSays)
{
    const WeekCalendar berlin{QTimeZone("Europe/Berlin"), Qt::Monday};
    PracticeLog log;
    // The clocks go back on Sunday, 2026-10-25, so that this week has 169 hours.
    log.record(entry(u"before"_s, "2026-10-18T21:59:59.999Z"));
    log.record(entry(u"first"_s, "2026-10-18T22:00:00Z", 1, 2));
    log.record(entry(u"last"_s, "2026-10-25T22:59:59.999Z", 2, 4));
    log.record(entry(u"after"_s, "2026-10-25T23:00:00Z"));
    log.entries[1].loudnessLUFS = -15;
    log.entries[1].deadAirSeconds = 6;
    const QDateTime now(QDate(2026, 10, 22), QTime(12, 0), Qt::UTC);

    const WeekSummary week = log.week(now, berlin);
    EXPECT_EQ(week.start, QDateTime(QDate(2026, 10, 18), QTime(22, 0), Qt::UTC));
    EXPECT_EQ(week.takes, 2);
    EXPECT_EQ(week.clipsPerHour(), 2);
    EXPECT_EQ(week.deadAirPerHour(), 2);
    EXPECT_EQ(week.averageSetMinutes(), 90);
    EXPECT_EQ(week.loudnessLUFS, -15) << "takes without loudness do not count";
    EXPECT_EQ(log.week(now, {berlin.zone, Qt::Sunday}).takes, 2) << "those of Sunday and of Monday";
    EXPECT_EQ(log.weekly(now.addDays(7), berlin).lastWeek, week);
    EXPECT_EQ(log.week(log.entries[1].recorded, {QTimeZone(), Qt::Monday}).takes, 1) << "7 times 24 hours";
}

TEST_F(PracticeLogTest, ComparesWhatBothWeeksHave)
{
    using enum Change::Direction;
    const WeekSummary last{.start = {}, .takes = 1, .seconds = 36'000, .clips = 30, .deadAirSeconds = 100};
    struct Case {
        std::int64_t clips;
        double deadAir;
        Change::Direction direction;
        std::optional<bool> better;
    };
    for (const Case& example : {Case{34, 109, same, std::nullopt}, {35, 110, up, false}, {25, 90, down, true}}) {
        const WeekSummary now{
            .start = {}, .takes = 1, .seconds = 36'000, .clips = example.clips, .deadAirSeconds = example.deadAir};
        for (const auto& change :
            {WeeklyComparison{now, last}.clipsPerHour(), WeeklyComparison{now, last}.deadAirPerHour()}) {
            ASSERT_TRUE(change);
            EXPECT_EQ(change->direction, example.direction) << example.clips;
            EXPECT_EQ(change->better, example.better) << example.clips;
        }
    }
    const WeeklyComparison empty{.thisWeek = {}, .lastWeek = last};
    EXPECT_EQ(empty.clipsPerHour(), std::nullopt);
    EXPECT_EQ(empty.averageSetMinutes(), std::nullopt);
    EXPECT_EQ(empty.loudnessLUFS(), std::nullopt);
    EXPECT_EQ(empty.takes(), (Change{.from = 1, .to = 0, .direction = down})) << "neither good nor bad";
}

}  // namespace vantiro
