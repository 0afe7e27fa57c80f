// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/PortalHotKey.h"
#include "platform/desktop/X11HotKey.h"
#include "tests/desktop/WindowTest.h"

#include <QCoreApplication>

#include <csignal>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    /// The hot key in this process, and a screen and a session that press it.
    class HotKeyTest : public WindowTest {
    protected:
        /// Counts its presses.
        static std::shared_ptr<int> count(const std::unique_ptr<HotKey>& key)
        {
            auto presses = std::make_shared<int>(0);
            QObject::connect(key.get(), &HotKey::pressed, key.get(), [presses] { ++*presses; });
            return presses;
        }

        static bool eventually(const std::function<bool()>& predicate)
        {
            return waitFor([&] {
                QCoreApplication::processEvents();
                return predicate();
            });
        }

        /// Lets so much time go by.
        static void serve(std::chrono::milliseconds time)
        {
            const auto end = std::chrono::steady_clock::now() + time;
            static_cast<void>(eventually([&] { return std::chrono::steady_clock::now() > end; }));
        }

        /// The layout takes its time to arrive everywhere.
        [[nodiscard]] bool strikeUntilItArrives(const QString& chord, const int& presses)
        {
            constexpr int mostStrikes = 50;
            const int before = presses;
            for (int strikes = 0; strikes < mostStrikes && presses == before; ++strikes) {
                key({chord});
                serve(100ms);
            }
            return presses > before;
        }

        static void run(const QString& program, const QStringList& arguments)
        {
            EXPECT_EQ(Program(program, arguments).wait().status, 0) << qPrintable(program);
        }

        inline static const QString keys = u"ctrl+alt+super+r"_s;

    private:
        int m_count = 1;
        char m_name[5] = "test";
        char* m_arguments[2] = {m_name, nullptr};
        QCoreApplication m_application{m_count, m_arguments};
    };

}  // namespace

TEST_F(HotKeyTest, ThePressReachesItWhateverIsLockedAndHoldingIsOnePress)
{
    std::unique_ptr<HotKey> hotKey = X11HotKey::make();
    ASSERT_TRUE(hotKey);
    auto presses = count(hotKey);
    int expected = 0;
    // Each line turns one lock round: none, Caps Lock, both, Num Lock.
    for (const char16_t* lock : {u"", u"Caps_Lock", u"Num_Lock", u"Caps_Lock"}) {
        if (*lock != 0) {
            key({QString::fromUtf16(lock)});
        }
        key({keys});
        ++expected;
        EXPECT_TRUE(eventually([&] { return *presses == expected; }))
            << "after " << QString::fromUtf16(lock).toStdString();
    }
    key({u"Num_Lock"_s, u"ctrl+alt+r"_s, u"super+r"_s, u"r"_s});

    // Longer than it takes a key to repeat some times.
    run(u"xdotool"_s,
        {u"keydown"_s, u"ctrl"_s, u"keydown"_s, u"alt"_s, u"keydown"_s, u"super"_s, u"keydown"_s, u"r"_s});
    serve(1200ms);
    EXPECT_EQ(*presses, ++expected);
    run(u"setxkbmap"_s, {u"gb"_s});
    serve(500ms);
    EXPECT_EQ(*presses, expected) << "another layout lets nothing go";
    // To whoever comes anew, the next repeat is a press.
    hotKey.reset();
    hotKey = X11HotKey::make();
    presses = count(hotKey);
    EXPECT_TRUE(eventually([&] { return *presses == 1; })) << "the screen does not repeat keys";
    run(u"xdotool"_s, {u"keyup"_s, u"r"_s, u"keyup"_s, u"super"_s, u"keyup"_s, u"alt"_s, u"keyup"_s, u"ctrl"_s});

    // Another layout has the letter elsewhere; of several, the first counts.
    const QString placeOfO = u"ctrl+alt+super+32"_s;
    run(u"setxkbmap"_s, {u"us"_s, u"dvorak"_s});
    EXPECT_TRUE(strikeUntilItArrives(placeOfO, *presses));
    run(u"setxkbmap"_s, {u"us,us"_s, u",dvorak"_s});
    EXPECT_TRUE(strikeUntilItArrives(u"ctrl+alt+super+27"_s, *presses));
    const int before = *presses;
    key({placeOfO});
    serve(100ms);
    EXPECT_EQ(*presses, before);
}

TEST_F(HotKeyTest, WhereAnotherProgramHasItThereIsNone)
{
    const std::unique_ptr<HotKey> first = X11HotKey::make();
    const auto presses = count(first);
    const std::unique_ptr<HotKey> second = X11HotKey::make();
    const auto none = count(second);
    serve(100ms);
    key({keys});
    EXPECT_TRUE(eventually([&] { return *presses == 1; }));
    EXPECT_EQ(*none, 0);
}

TEST_F(HotKeyTest, ThePortalIsAskedOnceAndForgetsTheKeyWithItsOwner)
{
    const QString log = m_sandbox.path(u"portal"_s);
    const auto told = [&log] { return QString::fromUtf8(Sandbox::readFile(log)).split(u'\n', Qt::SkipEmptyParts); };
    // Without a portal nothing happens.
    serve(50ms);
    std::unique_ptr<HotKey> hotKey = PortalHotKey::make();
    ASSERT_TRUE(hotKey);
    serve(100ms);
    hotKey.reset();

    for (const bool isRefused : {false, true}) {
        QFile::remove(log);
        Program portal(u"/usr/bin/python3"_s,
            QStringList{QStringLiteral(VANTIRO_MADE_PORTAL), log}
                + (isRefused ? QStringList{u"refuse"_s} : QStringList()));
        ASSERT_TRUE(eventually([&] { return told().contains(u"ready"_s); }));
        hotKey = PortalHotKey::make();
        const auto presses = count(hotKey);
        EXPECT_TRUE(eventually([&] { return told().size() == 3; })) << qPrintable(told().join(u'\n'));
        EXPECT_EQ(told().mid(1),
            (QStringList{
                u"registered: org.vantiro.Vantiro"_s, u"bound: record, CTRL+ALT+LOGO+r, Start or stop a take"_s}));
        if (!isRefused) {
            portal.signal(SIGUSR1);
            EXPECT_TRUE(eventually([&] { return *presses > 0; }));
            serve(50ms);
            EXPECT_EQ(*presses, 1);
        }
        hotKey.reset();
        EXPECT_TRUE(eventually([&] { return told().contains(u"gone"_s); }));
        EXPECT_TRUE(told().contains(u"closed"_s));
    }
}

}  // namespace vantiro::test
