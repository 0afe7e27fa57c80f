// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/VantiroPaths.h"
#include "tests/desktop/WindowTest.h"
#include "tests/graph/StreamLinks.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <limits>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    /// A window among the others of its session: other starts, links, players' keys, the tool.
    class WindowSessionTest : public WindowTest {
    protected:
        void start(QJsonObject settings = {})
        {
            settings[u"didSetup"_s] = true;
            settings[u"takeCopy"_s] = u"off"_s;
            settings[u"djName"_s] = u"DJ Test"_s;
            writeSettings(settings);
            m_mixer = interface(u"mixer"_s, u"Club Mixer"_s, 0.4F);
            open();
            sees(u"push button 'Club Mixer, Picked automatically'"_s);
        }

        /// Starts the application once more; it is expected to leave everything to the one that runs.
        static void startAgain(const QStringList& words = {})
        {
            const auto second = Program(QStringLiteral(VANTIRO_APP), words).wait();
            EXPECT_EQ(second.status, 0) << qPrintable(second.errors);
        }

        [[nodiscard]] qsizetype windowCount() { return tree().filter(u"frame 'Vantiro'"_s).size(); }

        /// What playerctl prints; nothing if it finds no player.
        static QString player(const QStringList& words)
        {
            return Program(u"playerctl"_s, QStringList{u"--player=vantiro"_s} + words).wait().output.trimmed();
        }
        static bool waitForStatus(const QString& status)
        {
            return waitFor([&] { return player({u"status"_s}) == status; }, 10s);
        }
        static QString track() { return player({u"metadata"_s, u"mpris:trackid"_s}).remove(u'\''); }
        static double position() { return player({u"position"_s}).toDouble(); }
        static bool waitForPosition(double least, double most)
        {
            return waitFor(
                [&] {
                    const double now = position();
                    return now >= least && now <= most;
                },
                5s);
        }
        /// Calls a method of the player; whether it has an answer that is no error.
        static bool call(const QString& method, const QStringList& arguments)
        {
            return Program(u"dbus-send"_s,
                       QStringList{u"--session"_s, u"--print-reply"_s, u"--dest=org.mpris.MediaPlayer2.vantiro"_s,
                           u"/org/mpris/MediaPlayer2"_s, method}
                           + arguments)
                       .wait()
                       .status
                == 0;
        }

        /// What goes over the session bus, as far as it fits the rule; into a file from the moment this returns.
        [[nodiscard]] std::unique_ptr<Program> listenToBus(const QString& rule) const
        {
            auto monitor = std::make_unique<Program>(
                u"/bin/sh"_s, QStringList{u"-c"_s, u"exec dbus-monitor --session \"$0\" > \"$1\""_s, rule, m_heard});
            // It listens once it has given its name back.
            EXPECT_TRUE(waitFor([this] { return heard().contains(u"NameLost"_s); }));
            return monitor;
        }
        [[nodiscard]] QString heard() const { return QString::fromUtf8(Sandbox::readFile(m_heard)); }

        const QString m_heard = m_sandbox.path(u"heard"_s);
        std::unique_ptr<VirtualDevice> m_mixer;
    };

}  // namespace

TEST_F(WindowSessionTest, ASecondStartBringsItsLinksToTheOneWindow)
{
    start();
    // As a desktop starts programs.
    m_sandbox.setVariable("DESKTOP_STARTUP_ID", "test \"quoted\"_TIME1");
    startAgain({u"vantiro://advanced"_s});
    m_sandbox.setVariable("DESKTOP_STARTUP_ID", std::nullopt);
    const QString alert = sees(u"alert 'Vantiro needs your attention'"_s);
    EXPECT_TRUE(
        alert.contains(u"A link asked Vantiro to advanced. Links are ignored until you allow them in Settings."_s))
        << qPrintable(alert);
    press(u"OK"_s);
    misses(u"alert"_s);
    EXPECT_EQ(windowCount(), 1);

    Program unknown(u"dbus-send"_s,
        {u"--session"_s, u"--print-reply"_s, u"--dest=org.vantiro.Vantiro"_s, u"/org/vantiro/Vantiro"_s,
            u"org.freedesktop.Application.ActivateAction"_s, u"string:quit"_s, u"array:variant:"_s,
            u"dict:string:variant:"_s});
    EXPECT_EQ(unknown.wait().status, 1);

    const auto notices = listenToBus(u"member='Notify'"_s);
    app().signal(SIGSTOP);
    const auto refused = Program(QStringLiteral(VANTIRO_APP), {}).wait();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors, u"Vantiro is running and does not answer. End it, then start it again.\n"_s);
    EXPECT_TRUE(waitFor([this] { return heard().contains(u"string \"Vantiro is running and does not answer."_s); }));
    app().signal(SIGCONT);
    key({u"ctrl+q"_s});
    expectEnd();
}

TEST_F(WindowSessionTest, OfTwoStartsAtOnceOneStays)
{
    writeSettings({{u"didSetup"_s, true}, {u"allowsURLControl"_s, true}});
    Program first(QStringLiteral(VANTIRO_APP), {u"vantiro://advanced"_s});
    Program second(QStringLiteral(VANTIRO_APP), {u"vantiro://advanced"_s});
    EXPECT_TRUE(waitFor([&] { return !first.isRunning() || !second.isRunning(); }, 20s));
    sees(u"push button 'SIMPLE'"_s);
    EXPECT_NE(first.isRunning(), second.isRunning());
    EXPECT_EQ(windowCount(), 1);
    Program& other = first.isRunning() ? second : first;
    EXPECT_EQ(other.wait().status, 0);
}

TEST_F(WindowSessionTest, AStartBringsAWindowBackThatWasClosedToTheTray)
{
    const QString log = m_sandbox.path(u"tray"_s);
    const Program tray(u"/usr/bin/python3"_s, {QStringLiteral(VANTIRO_MADE_TRAY), log});
    ASSERT_TRUE(waitFor([&] { return Sandbox::readFile(log).contains("ready"); }));
    start();
    ASSERT_TRUE(waitFor([&] { return Sandbox::readFile(log).contains("menu"); }));
    press(u"Close"_s);
    waitForNoWindow();
    startAgain();
    waitForWindow();
    sees(u"frame 'Vantiro' active"_s);
}

TEST_F(WindowSessionTest, TheToolTogglesATakeWithAndWithoutTheWindow)
{
    m_mixer = interface(u"mixer"_s, u"Club Mixer"_s, 0.4F);
    writeSettings({{u"format"_s, u"wav"_s}});
    const auto toggle = [](const QString& sentence) {
        const auto result = run({u"toggle"_s});
        EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
        EXPECT_TRUE(result.output.startsWith(sentence)) << qPrintable(result.output);
        EXPECT_EQ(result.output.count(u'\n'), 1);
    };
    toggle(u"Recording Club Mixer to "_s);
    const RecorderState take = waitForTake(0.5);
    EXPECT_TRUE(take.path.startsWith(VantiroPaths::takes()) && take.path.endsWith(u".wav"_s)) << qPrintable(take.path);
    toggle(u"Ended the take after "_s);
    EXPECT_EQ(waitForWholeTake().path, take.path);

    m_mixer.reset();
    start();
    toggle(u"Asked Vantiro's window to start a take."_s);
    const QString second = waitForTake(0.5).path;
    sees(u"push button 'Stop recording'"_s);
    toggle(u"Asked Vantiro's window to stop the take."_s);
    EXPECT_EQ(waitForWholeTake().path, second);
}

TEST_F(WindowSessionTest, TheDesktopsKeysReachTheTakeOnTheDeck)
{
    constexpr int seconds = 100;
    ASSERT_TRUE(PrivateGraph::givePortsToStreams());
    const StreamLinks links({u"vantiro-player"_s}, u"speakers"_s);
    writeSilentTake(VantiroPaths::takes() + u"/mix-2026-01-31_20-00-00.caf"_s, seconds);
    start({{u"allowsURLControl"_s, true}});
    EXPECT_EQ(player({u"status"_s}), QString());

    startAgain({u"vantiro://play"_s});
    ASSERT_TRUE(waitForStatus(u"Playing"_s));
    EXPECT_TRUE(waitForPosition(0.2, 30)) << position();
    const QStringList shown =
        player({u"metadata"_s, u"--format"_s, u"{{title}}|{{artist}}|{{album}}|{{mpris:length}}|{{mpris:artUrl}}"_s})
            .split(u'|');
    ASSERT_EQ(shown.size(), 5);
    EXPECT_FALSE(shown[0].isEmpty());
    EXPECT_EQ(shown.mid(1, 3), (QStringList{u"DJ Test"_s, u"Vantiro"_s, QString::number(qint64{seconds} * 1'000'000)}));
    EXPECT_EQ(track(), u"/org/vantiro/take/1"_s);
    EXPECT_TRUE(QFileInfo::exists(QUrl(shown[4]).toLocalFile())) << qPrintable(shown[4]);

    const auto signals = listenToBus(u"member='Seeked'"_s);
    player({u"pause"_s});
    EXPECT_TRUE(waitForStatus(u"Paused"_s));
    player({u"position"_s, u"50"_s});
    EXPECT_TRUE(waitForPosition(49.9, 50.1)) << position();
    player({u"position"_s, u"10-"_s});
    EXPECT_TRUE(waitForPosition(39.9, 40.1)) << position();

    // Nothing of this is more than a wish.
    const QString setPosition = u"org.mpris.MediaPlayer2.Player.SetPosition"_s;
    const QString seek = u"org.mpris.MediaPlayer2.Player.Seek"_s;
    EXPECT_TRUE(call(setPosition, {u"objpath:/org/other/1"_s, u"int64:1000000"_s}));
    EXPECT_TRUE(call(setPosition, {u"objpath:/org/vantiro/take/1"_s, u"int64:-1"_s}));
    EXPECT_TRUE(call(setPosition, {u"objpath:/org/vantiro/take/1"_s, u"int64:9223372036854775807"_s}));
    EXPECT_TRUE(call(u"org.freedesktop.DBus.Properties.Set"_s,
        {u"string:org.mpris.MediaPlayer2.Player"_s, u"string:Rate"_s, u"variant:double:0"_s}));
    EXPECT_TRUE(call(u"org.mpris.MediaPlayer2.Player.Next"_s, {}));
    EXPECT_FALSE(call(u"org.mpris.MediaPlayer2.Player.OpenUri"_s, {u"string:file:///etc/passwd"_s}));
    EXPECT_TRUE(waitForPosition(39.9, 40.1)) << position();
    EXPECT_TRUE(call(seek, {u"int64:9223372036854775807"_s}));
    EXPECT_TRUE(waitForPosition(99, seconds)) << position();
    EXPECT_TRUE(call(seek, {u"int64:-9223372036854775808"_s}));
    EXPECT_TRUE(waitForPosition(0, 0.1)) << position();
    const auto seeks = [this] { return heard().count(u"member=Seeked"_s); };
    EXPECT_TRUE(waitFor([&] { return seeks() >= 4; }));
    EXPECT_EQ(seeks(), 4) << qPrintable(heard());

    player({u"play"_s});
    EXPECT_TRUE(waitForStatus(u"Playing"_s));
    EXPECT_TRUE(waitForPosition(0.3, 30)) << "it does not go on";
    player({u"stop"_s});
    EXPECT_TRUE(waitForStatus(QString())) << "it is there without a take";

    startAgain({u"vantiro://play"_s});
    ASSERT_TRUE(waitForStatus(u"Playing"_s));
    EXPECT_EQ(track(), u"/org/vantiro/take/2"_s);
    // The end of the take.
    player({u"position"_s, u"99.5"_s});
    EXPECT_TRUE(waitForStatus(QString()));

    startAgain({u"vantiro://play"_s});
    ASSERT_TRUE(waitForStatus(u"Playing"_s));
    EXPECT_TRUE(call(u"org.mpris.MediaPlayer2.Quit"_s, {}));
    expectEnd();
}

}  // namespace vantiro::test
