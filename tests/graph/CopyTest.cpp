// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeHeader.h"
#include "core/recorder/RecorderStateStore.h"
#include "tests/graph/GraphTest.h"
#include "tests/support/SmallVolume.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <csignal>

namespace vantiro {

using namespace Qt::StringLiterals;

namespace {

    class CopyTest : public test::GraphTest {
    protected:
        /// Twenty silent minutes, which take no room and a while to encode.
        void SetUp() override
        {
            GraphTest::SetUp();
            constexpr std::int64_t frames = 20LL * 60 * 48'000;
            TakeHeader header(TakeShape{.sampleRate = 48'000, .channels = 2});
            header.tell(frames, true);
            test::Sandbox::writeFile(
                m_older, QByteArray(reinterpret_cast<const char*>(header.bytes().data()), TakeHeader::size));
            ASSERT_TRUE(QFile::resize(m_older, TakeHeader::size + frames * 6));
        }

        /// All files and folders, with those in them.
        [[nodiscard]] static QStringList allIn(const QString& folder)
        {
            QStringList found;
            for (QDirIterator all(
                     folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
                all.hasNext();) {
                found << QDir(folder).relativeFilePath(all.next());
            }
            found.sort();
            return found;
        }

        QString m_older = m_sandbox.path(u"older.caf"_s);
    };

}  // namespace

TEST_F(CopyTest, ATakeOnASmallDiskOutranksCopies)
{
    // It has room for a small copy until a take runs.
    const QString folder = m_sandbox.path(u"volume"_s);
    const auto volume = test::SmallVolume::mount(folder, 1400);
    if (volume == nullptr) {
        GTEST_SKIP() << "Mounting a small volume is not permitted here, so copies on a small disk are not tested.";
    }
    const auto card = device();
    ASSERT_NE(card, nullptr);
    const QString copy = folder + u"/copy.m4a"_s;
    test::Sandbox::writeFile(copy, "older");
    const QString inbox = folder + u"/Automatically Add to Music"_s;
    QDir().mkpath(inbox);
    const QStringList before = allIn(folder);
    const QStringList toCopy{u"export"_s, m_older, u"--format"_s, u"aac"_s, u"--out"_s, copy, u"--force"_s};
    const QString noRoom = u"there is no room for a copy in %1. Free some space, or choose another folder.\n"_s;

    // Held until it has to look at the room again, so that it cannot be done before.
    const auto underWay = launch(toCopy);
    ASSERT_TRUE(test::waitFor([&] { return allIn(folder).size() >= before.size() + 2; })) << "no copy is being made";
    underWay->signal(SIGSTOP);
    const auto tool = record(folder + u"/take.caf"_s);
    EXPECT_TRUE(plays(*card, 5.5));
    underWay->signal(SIGCONT);
    const auto gaveUp = underWay->wait();
    EXPECT_EQ(gaveUp.status, 1);
    EXPECT_EQ(gaveUp.errors, u"vantiro: "_s + noRoom.arg(folder));

    EXPECT_EQ(run(toCopy).errors, u"vantiro: "_s + noRoom.arg(folder)) << "one that has not begun";
    // On another disk there is room for it, but not here to hand it over.
    const QString elsewhere = m_sandbox.path(u"copy.m4a"_s);
    const auto handed = run(
        {u"export"_s, m_older, u"--format"_s, u"aac"_s, u"--out"_s, elsewhere, u"--to-music"_s, u"--inbox"_s, inbox});
    EXPECT_EQ(
        handed.errors, u"vantiro: The copy is made, but it did not reach the music library: "_s + noRoom.arg(folder));
    EXPECT_TRUE(QFile::exists(elsewhere));

    EXPECT_TRUE(plays(*card, 1));
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait().status, 0);
    const RecorderState last = lastTake();
    EXPECT_EQ(last.stats->overflowFrames, 0);
    EXPECT_FALSE(last.stats->writeFailed());
    expectExact(last);
    EXPECT_EQ(allIn(folder), before + QStringList{u"take.caf"_s});
    EXPECT_EQ(test::Sandbox::readFile(copy), "older");
    expectIdle();
}

}  // namespace vantiro
