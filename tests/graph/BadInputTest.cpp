// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/graph/GraphTest.h"
#include "tests/support/SmallVolume.h"

#include <QDir>
#include <QFileInfo>

#include <csignal>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    class BadInputTest : public test::GraphTest {
    protected:
        [[nodiscard]] static QStringList recordWords(const QString& path, const QStringList& options = {})
        {
            return QStringList{u"record"_s, u"--device"_s, u"card"_s, u"--out"_s, path} + options;
        }

        /// Expects that a start fails with this one sentence, in the foreground and detached, and leaves nothing
        /// behind.
        static void expectRefused(const QStringList& words, const QString& sentence, const QString& path)
        {
            for (const QStringList& manner : {QStringList(), QStringList{u"--detached"_s}}) {
                const auto result = run(words + manner);
                EXPECT_EQ(result.status, 1);
                EXPECT_EQ(result.errors, u"vantiro: "_s + sentence + u'\n');
                EXPECT_EQ(result.output, QString());
                EXPECT_FALSE(QFileInfo::exists(path));
                EXPECT_FALSE(QFileInfo::exists(VantiroPaths::lastTakeFile()));
                expectIdle();
            }
        }

        /// Records a short take of the card to the path and checks it.
        static void recordBriefly(const VirtualDevice& card, const QString& path)
        {
            const auto tool = record(path);
            ASSERT_TRUE(plays(card, 0.3));
            tool->signal(SIGINT);
            EXPECT_EQ(tool->wait().status, 0);
            expectWhole(lastTake());
        }
    };

}  // namespace

TEST_F(BadInputTest, IsRefusedWithOneSentenceAndLeavesNothing)
{
    const auto card = device();
    const QString file = m_sandbox.path(u"file"_s);
    test::Sandbox::writeFile(file, "not a folder");
    struct Case {
        QStringList source;
        QString path;
        QString sentence;
    };
    const QStringList known{u"--device"_s, u"card"_s};
    const Case cases[] = {
        {{u"--device"_s, u"nowhere"_s}, takePath(), u"device not connected: nowhere"_s},
        {known + QStringList{u"--channels"_s, u"3"_s}, takePath(), u"card has input channels 1 to 2, asked for [3]"_s},
        {known + QStringList{u"--channels"_s, u"1,0"_s}, takePath(),
            u"card has input channels 1 to 2, asked for [1, 0]"_s},
        {known + QStringList{u"--channels"_s, QString()}, takePath(),
            u"card has input channels 1 to 2, asked for []"_s},
        {known, file + u"/take.caf"_s, file + u": Not a directory"_s},
        {known, u"/proc/vantiro/take.caf"_s, u"/proc/vantiro: No such file or directory"_s},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(qPrintable(test.sentence));
        expectRefused(QStringList{u"record"_s, u"--out"_s, test.path} + test.source, test.sentence, test.path);
    }
}

TEST_F(BadInputTest, AFullDiskIsFoundBeforeATakeBegins)
{
    const QString folder = m_sandbox.path(u"volume"_s);
    const auto volume = test::SmallVolume::mount(folder, 32);
    if (volume == nullptr) {
        GTEST_SKIP() << "Mounting a small volume is not permitted here, so a full disk is not tested.";
    }
    const auto card = device();
    const QString path = folder + u"/take.caf"_s;
    expectRefused(recordWords(path),
        u"There is no room for a take in %1. Free some space, or choose another folder."_s.arg(folder), path);
    EXPECT_EQ(filesIn(folder), QStringList());
}

TEST_F(BadInputTest, WithoutPipeWireNothingIsTried)
{
    const QString sentence = u"PipeWire is not running, so there is no audio to record. Start it and try again."_s;
    m_graph->pause();
    expectRefused(recordWords(takePath()), sentence, takePath());
    m_graph->kill();
    expectRefused(recordWords(takePath()), sentence, takePath());
    const auto listed = run({u"sources"_s});
    EXPECT_EQ(listed.status, 1);
    EXPECT_EQ(listed.errors, u"vantiro: "_s + sentence + u'\n');
}

TEST_F(BadInputTest, ATakeThatIsCalledOffBeforeItsFirstSoundLeavesNothing)
{
    for (const bool isStopped : {false, true}) {
        const auto card = device();
        card->hang();
        const auto tool = launch(recordWords(takePath()));
        // The file is made once the recorder has given up waiting for a first cycle.
        ASSERT_TRUE(test::waitFor([this] { return QFileInfo::exists(takePath()); }));
        isStopped ? tool->signal(SIGTERM) : card->disconnect();
        const auto result = tool->wait();
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
            isStopped ? u"vantiro: stopped before the take began\n"_s
                      : u"vantiro: card was disconnected before the take began\n"_s);
        EXPECT_EQ(filesIn(QFileInfo(takePath()).path()), QStringList());
        expectIdle();
    }
}

TEST_F(BadInputTest, NothingIsEverOverwritten)
{
    const auto card = device();
    const QString first = takePath();
    const auto numbered = [this](int number) { return m_sandbox.path(u"takes/take_%1.caf"_s.arg(number)); };
    recordBriefly(*card, first);
    const std::int64_t frames = lastTake().stats->frames;

    const auto refused = run(recordWords(first));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(
        refused.errors, u"vantiro: %1 is there already; give --force to keep it under another name\n"_s.arg(first));
    EXPECT_EQ(test::SoundFile::read(first).frames, frames);

    recordBriefly(*card, first);  // Detached: nobody is there to be asked.
    EXPECT_EQ(test::SoundFile::read(numbered(2)).frames, frames);
    const std::int64_t second = lastTake().stats->frames;

    const auto tool = launch(recordWords(first, {u"--force"_s}));
    ASSERT_TRUE(test::waitFor([] { return RecorderStateStore::running().has_value(); }));
    ASSERT_TRUE(plays(*card, 0.3));
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait().status, 0);
    expectWhole(lastTake());
    EXPECT_EQ(test::SoundFile::read(numbered(2)).frames, frames);
    EXPECT_EQ(test::SoundFile::read(numbered(3)).frames, second);
    EXPECT_EQ(filesIn(m_sandbox.path(u"takes"_s)), (QStringList{u"take.caf"_s, u"take_2.caf"_s, u"take_3.caf"_s}));
}

TEST_F(BadInputTest, ARunningTakeIsNotDisturbed)
{
    const auto card = device();
    const auto tool = record(takePath());
    const QString other = m_sandbox.path(u"takes/other.caf"_s);
    const QStringList misuses[] = {
        {u"record"_s, u"--detached"_s},
        {u"record"_s, u"--device"_s, u"card"_s, u"--app"_s, u"player"_s},
        {u"record"_s, u"--device"_s, u"card"_s, u"--format"_s, u"mp3"_s},
        {u"record"_s, u"--device"_s, u"card"_s, u"--channels"_s, u"1,b"_s},
        {u"record"_s, u"--device"_s},
        {u"record"_s, u"--device"_s, u"card"_s, u"--device"_s, u"card"_s},
        {u"stop"_s, u"--now"_s},
        {u"dance"_s},
    };
    for (const QStringList& words : misuses) {
        const auto result = run(words);
        EXPECT_EQ(result.status, 2) << qPrintable(words.join(u' '));
        EXPECT_TRUE(result.errors.startsWith(u"vantiro: "_s)) << qPrintable(result.errors);
        EXPECT_EQ(result.output, QString());
    }
    for (const QStringList& manner : {QStringList(), QStringList{u"--detached"_s}}) {
        const auto second = run(recordWords(other, manner));
        EXPECT_EQ(second.status, 1);
        EXPECT_EQ(second.errors, u"vantiro: already recording: %1\n"_s.arg(takePath()));
        EXPECT_FALSE(QFileInfo::exists(other));
    }
    for (const QString& listener : {u"sources"_s, u"check"_s}) {
        EXPECT_EQ(run({listener}).status, 0);
    }
    const auto byWindow = start({.source = SourceRef::device(u"card"_s), .output = other});
    ASSERT_FALSE(byWindow);
    EXPECT_EQ(errorText(byWindow.error()), u"already recording: "_s + takePath());
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait().status, 0);
    expectWhole(lastTake());
}

TEST_F(BadInputTest, DamagedRecordsOfFormerTakesDoNotMatter)
{
    const auto card = device();
    test::Sandbox::writeFile(VantiroPaths::stateFile(), "{\"pid\": 1, \"path\"");
    test::Sandbox::writeFile(VantiroPaths::lastTakeFile(), QByteArray(5000, '\xff'));
    test::Sandbox::writeFile(VantiroPaths::lockFile(), "garbage");
    test::Sandbox::writeFile(m_sandbox.path(u"takes/broken.caf"_s), "caff and then nothing");
    EXPECT_EQ(run({u"status"_s}).status, 1);
    recordBriefly(*card, takePath());
    EXPECT_EQ(test::Sandbox::readFile(m_sandbox.path(u"takes/broken.caf"_s)), "caff and then nothing");
    expectIdle();
}

}  // namespace vantiro
