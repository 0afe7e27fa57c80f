// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Appearance.h"
#include "platform/desktop/FileManager.h"
#include "platform/desktop/MediaPlayer.h"
#include "tests/desktop/DesktopTest.h"

#include <QCoreApplication>

#include <csignal>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// What the window asks of a desktop.
    class DesktopAskTest : public test::DesktopTest {
    protected:
        [[nodiscard]] QStringList log() const
        {
            return QString::fromUtf8(test::Sandbox::readFile(m_sandbox.path(u"desktop"_s)))
                .split(u'\n', Qt::SkipEmptyParts);
        }

        static bool eventually(const std::function<bool()>& predicate)
        {
            return test::waitFor([&] {
                QCoreApplication::processEvents();
                return predicate();
            });
        }

    private:
        int m_count = 1;
        char m_name[5] = "test";
        char* m_arguments[2] = {m_name, nullptr};
        QCoreApplication m_application{m_count, m_arguments};
    };

}  // namespace

TEST_F(DesktopAskTest, TheDesktopIsAskedFirstAndMissedByNobody)
{
    m_sandbox.setVariable("VANTIRO_REDUCE_MOTION", std::nullopt);
    m_sandbox.setVariable("XDG_CURRENT_DESKTOP", std::nullopt);
    const auto session = BusLink::open(BusKind::session);
    ASSERT_TRUE(session);
    QStringList opened;
    const auto open = [&opened](const QString& folder) { opened << folder; };
    const FileManager files(session.get(), open);
    const FileManager withoutBus(nullptr, open);

    withoutBus.showFolder(u"/first"_s);
    files.showItem(u"/takes/a b.caf"_s);
    EXPECT_TRUE(eventually([&] { return opened == QStringList{u"/first"_s, u"/takes"_s}; }));

    test::Program desktop(u"/usr/bin/python3"_s, {QStringLiteral(VANTIRO_MADE_DESKTOP), m_sandbox.path(u"desktop"_s)});
    ASSERT_TRUE(eventually([&] { return log().contains(u"ready"_s); }));
    files.showItem(u"/takes/a b.caf"_s);
    files.showFolder(u"/takes"_s);
    EXPECT_TRUE(eventually([&] {
        return log().mid(1) == QStringList{u"item: file:///takes/a%20b.caf"_s, u"folder: file:///takes"_s};
    })) << qPrintable(log().join(u'\n'));
    EXPECT_EQ(opened.size(), 2);

    const Appearance appearance(session.get());
    EXPECT_TRUE(eventually([&] { return appearance.reducedMotion(); }));
    desktop.signal(SIGUSR1);
    EXPECT_TRUE(eventually([&] { return !appearance.reducedMotion(); }));
}

TEST_F(DesktopAskTest, APlayerTellsWhatChangedAndGivesWayToAnother)
{
    const auto session = BusLink::open(BusKind::session);
    ASSERT_TRUE(session);
    const auto other = BusLink::open(BusKind::session);
    std::int64_t position = 0;
    MediaPlayer first(other.get(), [] { return 0; });
    MediaPlayer player(session.get(), [&position] { return position; });
    MediaPlayer withoutBus(nullptr, [] { return 0; });
    withoutBus.show(MediaContent{});
    withoutBus.tellSought();

    const auto names = [] {
        return test::Program(u"dbus-send"_s,
            {u"--session"_s, u"--print-reply"_s, u"--dest=org.freedesktop.DBus"_s, u"/"_s,
                u"org.freedesktop.DBus.ListNames"_s})
            .wait()
            .output;
    };
    const QString name = u"\"org.mpris.MediaPlayer2.vantiro\""_s;
    const QString otherName = u"\"org.mpris.MediaPlayer2.vantiro.instance%1\""_s.arg(::getpid());
    first.show(MediaContent{});
    EXPECT_TRUE(eventually([&] { return names().contains(name); }));
    MediaContent content{.title = u"A\u202e title \U0001f3a7"_s, .length = 1000};
    player.show(content);
    EXPECT_TRUE(eventually([&] { return names().contains(otherName); }));

    const QString log = m_sandbox.path(u"signals"_s);
    test::Program monitor(
        u"/bin/sh"_s, {u"-c"_s, u"exec dbus-monitor --session \"path='/org/mpris/MediaPlayer2'\" > \"$0\""_s, log});
    const auto told = [&log] { return QString::fromUtf8(test::Sandbox::readFile(log)); };
    EXPECT_TRUE(eventually([&] { return told().contains(u"NameLost"_s); }));
    player.show(content);
    content.isPaused = true;
    player.show(content);
    content.title = u"Another"_s;
    content.track = 2;
    player.show(content);
    position = 5000;
    player.tellSought();
    EXPECT_TRUE(eventually([&] { return told().contains(u"int64 1000\n"_s) && told().contains(u"member=Seeked"_s); }))
        << qPrintable(told());
    EXPECT_EQ(told().count(u"member=PropertiesChanged"_s), 2) << qPrintable(told());
    EXPECT_EQ(told().count(u"\"Paused\""_s), 1);
    EXPECT_EQ(told().count(u"/org/vantiro/take/2"_s), 1);

    // A take that replaces another is one more, and the last word counts.
    player.show(std::nullopt);
    player.show(std::nullopt);
    EXPECT_TRUE(eventually([&] { return told().count(u"\"Stopped\""_s) == 1; })) << qPrintable(told());
    player.show(content);
    player.show(std::nullopt);
    first.show(std::nullopt);
    EXPECT_TRUE(eventually([&] { return !names().contains(u"MediaPlayer2"_s); }));
    player.show(content);
    EXPECT_TRUE(eventually([&] { return names().contains(name); }));
}

}  // namespace vantiro
