// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/desktop/WindowTest.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <csignal>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    /// A window whose end is looked at.
    class WindowEndTest : public WindowTest {
    protected:
        void start()
        {
            writeSettings({{u"didSetup"_s, true}, {u"takeCopy"_s, u"off"_s}});
            m_mixer = interface(u"mixer"_s, u"Club Mixer"_s, 0.4F);
            open();
            sees(u"push button 'Club Mixer, Picked automatically'"_s);
        }

        RecorderState startTake()
        {
            start();
            key({u"ctrl+r"_s});
            const RecorderState take = waitForTake(0.5);
            sees(u"push button 'Stop recording'"_s);
            return take;
        }

        /// A take still runs, and it is this one.
        static void expectGoesOn(const RecorderState& take)
        {
            EXPECT_TRUE(takeGrows(0.4));
            const auto running = RecorderStateStore::running();
            ASSERT_TRUE(running);
            EXPECT_EQ(running->path, take.path);
            EXPECT_EQ(running->pid, take.pid);
        }

        /// The next window shows that take, and stops it.
        void expectAdopted(const RecorderState& take)
        {
            open();
            sees(u"push button 'Stop recording'"_s);
            sees(u"push button 'Club Mixer, Recording from this source'"_s);
            press(u"Stop recording"_s);
            EXPECT_EQ(waitForWholeTake().path, take.path);
            misses(u"alert"_s);
        }

        /// A take whose AAC copy an earlier run still owes. Where the copy will be.
        [[nodiscard]] static QString oweCopy(int seconds)
        {
            const QString take = VantiroPaths::takes() + u"/mix-2026-01-31_20-00-00.caf"_s;
            writeSilentTake(take, seconds);
            const QJsonObject owed{{u"take"_s, take}, {u"format"_s, u"aac"_s}, {u"toMusic"_s, false}};
            Sandbox::writeFile(VantiroPaths::pendingCopiesFile(),
                QJsonDocument(QJsonObject{{u"records"_s, QJsonArray{owed}}}).toJson());
            return VantiroPaths::takes() + u"/Copies/mix-2026-01-31_20-00-00.m4a"_s;
        }

        std::unique_ptr<VirtualDevice> m_mixer;
    };

    const QString copiesQuestion = u"alert 'Copies of your takes are being made'"_s;

}  // namespace

TEST_F(WindowEndTest, ClosingIsTheEndWhereNoTrayShowsTheProgram)
{
    start();
    press(u"Close"_s);
    expectEnd();
    const RecorderState take = startTake();
    key({u"ctrl+w"_s});
    sees(u"alert 'A take is recording'"_s);
    press(u"Keep Recording"_s);
    expectEnd();
    expectGoesOn(take);
}

TEST_F(WindowEndTest, ClosingHidesTheWindowWhileItsItemIsInATray)
{
    const QString log = m_sandbox.path(u"tray"_s);
    const auto told = [&log] { return QString::fromUtf8(Sandbox::readFile(log)); };
    Program tray(u"/usr/bin/python3"_s, {QStringLiteral(VANTIRO_MADE_TRAY), log});
    ASSERT_TRUE(waitFor([&] { return told().contains(u"ready"_s); }));
    const RecorderState take = startTake();
    EXPECT_TRUE(waitFor([&] { return told().contains(u"Stop Recording"_s) || told().contains(u"Stop recording"_s); }))
        << qPrintable(told());

    press(u"Close"_s);
    waitForNoWindow();
    expectGoesOn(take);
    EXPECT_TRUE(app().isRunning());
    tray.signal(SIGUSR1);
    press(u"Open Vantiro"_s);
    waitForWindow();
    sees(u"push button 'Stop recording'"_s);

    // The last line of its menu.
    press(u"Close"_s);
    waitForNoWindow();
    tray.signal(SIGUSR2);
    waitForWindow();
    sees(u"alert 'A take is recording'"_s);
    press(u"Cancel"_s);
    misses(u"alert"_s);

    // Without a tray again there would be no way back to a window that is gone.
    press(u"Close"_s);
    waitForNoWindow();
    tray.signal(SIGKILL);
    waitForWindow();
    expectGoesOn(take);
}

TEST_F(WindowEndTest, QuittingDuringATakeDoesWhatTheUserSays)
{
    const RecorderState take = startTake();
    const QString question = u"alert 'A take is recording'"_s;
    key({u"ctrl+q"_s});
    sees(question);
    key({u"Escape"_s});
    misses(question);
    key({u"ctrl+q"_s});
    press(u"Cancel"_s);
    misses(question);
    expectGoesOn(take);

    key({u"ctrl+q"_s});
    press(u"Keep Recording"_s);
    expectEnd();
    expectGoesOn(take);

    open();
    sees(u"push button 'Stop recording'"_s);
    key({u"ctrl+q"_s});
    press(u"Stop and Save"_s);
    expectEnd();
    EXPECT_EQ(waitForWholeTake().path, take.path);
}

TEST_F(WindowEndTest, ATakeOutlivesAWindowThatIsToldToGoOrCrashes)
{
    const RecorderState take = startTake();
    app().signal(SIGTERM);
    expectEnd();
    expectGoesOn(take);
    open();
    sees(u"push button 'Stop recording'"_s);
    app().signal(SIGKILL);
    EXPECT_TRUE(waitFor([this] { return !app().isRunning(); }));
    expectGoesOn(take);
    expectAdopted(take);
}

TEST_F(WindowEndTest, CopiesAreFinishedWithoutTheWindow)
{
    // Some seconds of work.
    const QString copy = oweCopy(20 * 60);
    open();
    key({u"ctrl+q"_s});
    sees(copiesQuestion);
    press(u"Quit When Done"_s);
    waitForNoWindow();
    EXPECT_TRUE(app().isRunning());
    // Copies stand back behind everything else on the machine.
    expectEnd(80s);
    EXPECT_TRUE(QFileInfo::exists(copy));
}

TEST_F(WindowEndTest, CopiesAreLeftToTheNextRunByAUserWithoutPatience)
{
    const QString copy = oweCopy(8 * 3600);
    open();
    key({u"ctrl+q"_s});
    sees(copiesQuestion);
    press(u"Cancel"_s);
    misses(u"alert"_s);
    EXPECT_TRUE(app().isRunning());
    key({u"ctrl+q"_s});
    press(u"Quit Now"_s);
    expectEnd();
    EXPECT_FALSE(QFileInfo::exists(copy));
    EXPECT_TRUE(Sandbox::readFile(VantiroPaths::pendingCopiesFile()).contains("mix-2026-01-31"));
}

}  // namespace vantiro::test
