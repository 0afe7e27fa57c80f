// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/PracticeLog.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/tool/ToolTest.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    class TakeToolTest : public ToolTest {
    protected:
        /// A take of ten seconds whose header knows of one.
        QString unfinishedTake(const QString& name)
        {
            QString path = folder() + u'/' + name;
            Sandbox::writeFile(path, takeBytes(8000, '\x20'));
            return path;
        }

        [[nodiscard]] QString folder() const { return m_sandbox.path(u"takes"_s); }
    };

}  // namespace

TEST_F(TakeToolTest, MendsUnfinishedTakesOnlyWhenNoRecorderLives)
{
    EXPECT_EQ(run({u"takes"_s, folder()}).status, 1) << "a folder that is not there";
    const QString path = unfinishedTake(u"mix-2026-09-05_22-00-00.caf"_s);
    const QByteArray before = Sandbox::readFile(path);
    {
        const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
        ASSERT_TRUE(lock);
        EXPECT_EQ(run({u"takes"_s, folder()}).status, 0);
        EXPECT_EQ(Sandbox::readFile(path), before);
    }
    const auto first = run({u"takes"_s, folder()});
    EXPECT_EQ(first.errors, QString());
    EXPECT_TRUE(first.output.startsWith(u"Mended mix-2026-09-05_22-00-00.caf, "_s)) << qPrintable(first.output);
    EXPECT_TRUE(first.output.contains(u"  0:00:10  8,000 Hz  mono  "_s)) << qPrintable(first.output);
    EXPECT_NE(Sandbox::readFile(path), before);
    const QJsonObject second =
        QJsonDocument::fromJson(run({u"takes"_s, folder(), u"--json"_s}).output.toUtf8()).object();
    EXPECT_EQ(second.value("mended"_L1).toArray().size(), 0);
    EXPECT_EQ(second.value("takes"_L1).toArray().at(0)["seconds"_L1].toDouble(), 10);
}

TEST_F(TakeToolTest, ReadsSamplesWithEveryCommand)
{
    ASSERT_EQ(run({u"samples"_s, folder()}).status, 0);
    const QString clipped = folder() + u"/mix-2026-09-23_20-35-41.caf"_s;
    const auto told = run({u"analyze"_s, clipped});
    EXPECT_TRUE(told.output.contains(u"Clipping  3 places, 3.7 an hour, "_s)) << qPrintable(told.output);
    EXPECT_EQ(told.errors, QString());
    const auto review = QJsonDocument::fromJson(run({u"analyze"_s, clipped, u"--review"_s}).output.toUtf8()).object();
    EXPECT_EQ(review.value("moments"_L1).toArray().size(), 3);
}

TEST_F(TakeToolTest, PutsAPictureOnlyWhereNothingElseStands)
{
    const QString take = unfinishedTake(u"a.caf"_s);
    const QString picture = m_sandbox.path(u"shape.png"_s);
    for (const QString& kept : {take, unfinishedTake(u"b.caf"_s), m_sandbox.path(u"notes"_s)}) {
        if (kept.endsWith(u"notes"_s)) {
            Sandbox::writeFile(kept, "PNG");
        }
        const QByteArray before = Sandbox::readFile(kept);
        EXPECT_EQ(run({u"shape"_s, take, u"--png"_s, kept}).status, 2);
        EXPECT_EQ(Sandbox::readFile(kept), before) << qPrintable(kept);
    }
    Sandbox::writeFile(picture, {});
    for (const QString& width : {u"300"_s, u"400"_s}) {
        EXPECT_EQ(run({u"shape"_s, take, u"--png"_s, picture, u"--width"_s, width}).output, picture + u'\n');
        const QByteArray size = QByteArray("\0\0", 2) + char(width.toInt() / 256) + char(width.toInt() % 256);
        EXPECT_EQ(Sandbox::readFile(picture).mid(1, 3) + Sandbox::readFile(picture).mid(16, 4), "PNG" + size);
    }
}

TEST_F(TakeToolTest, FindsItsDecodersWhereItIsInstalled)
{
    QDir().mkpath(m_sandbox.path(u"libexec/vantiro"_s));
    const QString tool = m_sandbox.path(u"libexec/vantiro/vantiro"_s);
    ASSERT_TRUE(QFile::copy(QStringLiteral(VANTIRO_TOOL), tool));
    ASSERT_TRUE(QFile::link(QFileInfo(QStringLiteral(VANTIRO_TOOL)).path() + u"/../lib"_s, m_sandbox.path(u"lib"_s)));
    const QString picture = m_sandbox.path(u"shape.png"_s);
    EXPECT_EQ(run({u"shape"_s, unfinishedTake(u"a.caf"_s), u"--png"_s, picture}, Disk::free, tool).errors, QString());
}

TEST_F(TakeToolTest, AnswersForTheFileThatIsThereWhateverItsNameWasBefore)
{
    const QString take = VantiroPaths::takes() + u"/set.caf"_s;
    const auto analysis = [&](const QString& path) { return run({u"analyze"_s, path, u"--json"_s}).output; };
    const auto write = [](const QString& path, double rate, char byte) {
        Sandbox::writeFile(path, takeBytes(rate, byte));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite)
            && file.setFileTime(QDateTime(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC), QFile::FileModificationTime));
    };
    write(take, 8000, '\x20');
    const QString first = analysis(take);
    EXPECT_EQ(analysis(take), first);
    EXPECT_EQ(QDir(TakeAnalysis::cacheFolder()).entryList(QDir::Files).size(), 1);

    const QString elsewhere = m_sandbox.path(u"elsewhere/set.caf"_s);
    write(elsewhere, 8000, '\x10');
    EXPECT_NE(analysis(elsewhere), first) << "in another folder";
    write(take, 16000, '\x20');
    const QString second = analysis(take);
    EXPECT_NE(second, first) << "another take with an old date";
    Sandbox::writeFile(take, takeBytes(16000, '\x10'));
    QFile file(take);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite)
        && file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(60), QFile::FileModificationTime));
    EXPECT_NE(analysis(take), second) << "worked over in place";
}

TEST_F(TakeToolTest, LetsNoNameInAFailureSteerTheTerminal)
{
    const auto outcome = run({u"analyze"_s, m_sandbox.path(u"\x1B[31mset.caf"_s)});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_FALSE(outcome.errors.contains(u'\x1B')) << qPrintable(outcome.errors);
}

TEST_F(TakeToolTest, RefusesAPipeAtOnce)
{
    const QString pipe = m_sandbox.path(u"pipe.mp3"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(run({u"analyze"_s, pipe}).errors, u"vantiro: pipe.mp3 is no file with audio.\n"_s);
}

TEST_F(TakeToolTest, PracticeAddsWhatTheLogLacksAndKeepsRatings)
{
    unfinishedTake(u"mix-2026-09-05_22-00-00.caf"_s);
    const auto first = run({u"practice"_s, folder()});
    EXPECT_EQ(first.status, 0) << qPrintable(first.errors);
    EXPECT_TRUE(first.output.startsWith(u"Added 1 take to the log\n"_s)) << qPrintable(first.output);
    PracticeLog log = PracticeLog::load(folder());
    log.setStar(4, u"mix-2026-09-05_22-00-00.caf"_s);
    ASSERT_TRUE(log.save(folder()));
    unfinishedTake(u"mix-2026-09-06_22-00-00.caf"_s);
    const auto second = QJsonDocument::fromJson(run({u"practice"_s, folder(), u"--json"_s}).output.toUtf8()).object();
    EXPECT_EQ(second.value("analysed"_L1).toArray(), QJsonArray{u"mix-2026-09-06_22-00-00.caf"_s});
    ASSERT_TRUE(
        QFile::rename(folder() + u"/mix-2026-09-05_22-00-00.caf"_s, folder() + u"/mix-2026-09-05_22-00-00 best.caf"_s));
    EXPECT_EQ(run({u"practice"_s, folder()}).status, 0);
    log = PracticeLog::load(folder());
    ASSERT_EQ(log.entries.size(), 2U);
    EXPECT_EQ(log.entries.front().take, u"mix-2026-09-05_22-00-00 best.caf"_s);
    EXPECT_EQ(log.entries.front().star, 4);
}

TEST_F(TakeToolTest, PracticeShowsTheWeeksWhateverBecomesOfTheLog)
{
    unfinishedTake(u"mix-2026-09-05_22-00-00.caf"_s);
    Sandbox::writeFile(PracticeLog::url(folder()), "no log");
    const auto anew = run({u"practice"_s, folder()});
    EXPECT_EQ(anew.status, 0);
    EXPECT_TRUE(anew.errors.contains(u"/.vantiro-practice.broken.json"_s)) << qPrintable(anew.errors);
#ifdef VANTIRO_SANITIZED
    GTEST_SKIP() << "a sanitizer writes files of its own, which a full disk ends";
#endif
    unfinishedTake(u"mix-2026-09-06_22-00-00.caf"_s);
    const auto full = run({u"practice"_s, folder()}, Disk::full);
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(full.errors.contains(u".vantiro-practice.json"_s)) << qPrintable(full.errors);
    EXPECT_TRUE(full.output.contains(u"The log holds 2 sets"_s)) << qPrintable(full.output);
}

}  // namespace vantiro::test
