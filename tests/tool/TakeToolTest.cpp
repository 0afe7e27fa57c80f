// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/PracticeLog.h"
#include "core/capture/TakeHeader.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    /// The real tool, on files alone.
    class TakeToolTest : public SandboxTest {
    protected:
        struct Outcome {
            int status = -1;
            QString output;
            QString errors;
        };

        [[nodiscard]] static Outcome run(const QStringList& words)
        {
            QProcess process;
            process.setStandardInputFile(QProcess::nullDevice());
            process.start(QStringLiteral(VANTIRO_TOOL), words);
            EXPECT_TRUE(process.waitForFinished());
            return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
        }

        /// A take of ten seconds whose header knows of one.
        QString unfinishedTake(const QString& name)
        {
            const TakeShape shape{.sampleRate = 8000, .channels = 1};
            TakeHeader header(shape);
            header.tell(8000, false);
            QString path = folder() + u'/' + name;
            Sandbox::writeFile(path,
                QByteArray(reinterpret_cast<const char*>(header.bytes().data()), TakeHeader::size)
                    + QByteArray(10 * 8000 * 3, '\x20'));
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
    const QString png = m_sandbox.path(u"shape.png"_s);
    EXPECT_EQ(run({u"shape"_s, clipped, u"--png"_s, png, u"--width"_s, u"300"_s}).output, png + u'\n');
    EXPECT_TRUE(Sandbox::readFile(png).startsWith("\x89PNG"));
    const QByteArray take = Sandbox::readFile(clipped);
    EXPECT_EQ(run({u"shape"_s, clipped, u"--png"_s, clipped}).status, 2);
    EXPECT_EQ(Sandbox::readFile(clipped), take);
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
    log = PracticeLog::load(folder());
    ASSERT_EQ(log.entries.size(), 2U);
    EXPECT_EQ(log.entries.front().star, 4);
}

}  // namespace vantiro::test
