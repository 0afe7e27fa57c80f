// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RecordHotKey.h"
#include "app/TrayPanel.h"
#include "app/model/LoginFlow.h"
#include "core/foundation/InstallLocation.h"
#include "platform/desktop/LoginItem.h"
#include "tests/support/FakeScheduler.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// The real login item below folders of the test's.
    class LoginTest : public test::SandboxTest {
    protected:
        LoginTest()
        {
            m_sandbox.setVariable("XDG_CONFIG_HOME", m_sandbox.path(u"config"_s).toUtf8());
            m_sandbox.setVariable("XDG_CONFIG_DIRS", m_sandbox.path(u"etc"_s).toUtf8());
        }

        void want(bool on)
        {
            m_flow.setOpensAtLogin(on);
            m_scheduler.settle();
        }

        [[nodiscard]] QByteArray entry() const { return test::Sandbox::readFile(m_own); }

        const QString m_own = m_sandbox.path(u"config/autostart/org.vantiro.Vantiro.desktop"_s);
        const QString m_systems = m_sandbox.path(u"etc/autostart/org.vantiro.Vantiro.desktop"_s);
        test::FakeScheduler m_scheduler;
        AppModel m_model{std::make_unique<SettingsStore>(), {}, {}};
        bool m_isTemporary = false;
        LoginFlow m_flow{m_model, m_scheduler,
            {.isOn = [] { return LoginItem::state() == LoginItem::State::on; },
                .set =
                    [](bool on) {
                        return LoginItem::set(on ? LoginItem::State::on : LoginItem::State::off,
                            u"/home/dj/My \"$et\" 100%/Vantiro.AppImage"_s);
                    },
                .isTemporary = [this] { return m_isTemporary; }}};
    };

    /// A hot key that counts how many there are.
    class CountedKey final : public HotKey {
    public:
        explicit CountedKey(int& count) : m_count(count) { ++m_count; }
        ~CountedKey() override { --m_count; }

    private:
        int& m_count;
    };

}  // namespace

TEST(InstallLocation, WhereAProgramLiesTellsWhetherItStays)
{
    using Kind = InstallLocation::Kind;
    const struct {
        const char16_t* path;
        Kind kind;
    } cases[] = {
        {u"/usr/bin/vantiro-app", Kind::applications},
        {u"/opt/vantiro/bin/vantiro-app", Kind::applications},
        {u"/home/dj/.local/bin/vantiro-app", Kind::applications},
        {u"/home/other/.local/bin/vantiro-app", Kind::elsewhere},
        {u"/tmp/.mount_Vantirx7Kq/usr/bin/vantiro-app", Kind::translocated},
        {u"/media/dj/.mount_VantiroAb/usr/bin/vantiro-app", Kind::translocated},
        {u"/run/media/dj/STICK/Vantiro.AppImage", Kind::mountedVolume},
        {u"/media/../usr/bin/vantiro-app", Kind::applications},
        {u"/mntx/vantiro-app", Kind::elsewhere},
        {u"/usr", Kind::elsewhere},
        {u"/home/dj/Downloads/Vantiro.AppImage", Kind::elsewhere},
    };
    for (const auto& [path, kind] : cases) {
        const QString text = QString::fromUtf16(path);
        EXPECT_EQ(InstallLocation::of(text, u"/home/dj"_s), kind) << qPrintable(text);
    }
}

TEST(LoginItem, AnImageIsStartedAgainOnlyIfTheProgramLiesInIt)
{
    test::Sandbox sandbox;
    const QString image = u"/home/dj/Vantiro.AppImage"_s;
    sandbox.setVariable("APPIMAGE", image.toUtf8());
    const struct {
        const char* mounted;
        const char16_t* executable;
        bool isInside;
    } cases[] = {
        {"/tmp/.mount_OtherAb", u"/usr/bin/vantiro-app", false},
        {"", u"/usr/bin/vantiro-app", false},
        {"/tmp/run", u"/tmp/runner/vantiro-app", false},
        {"/tmp/run/", u"/tmp/run/usr/bin/vantiro-app", true},
        {"", u"/tmp/.mount_VantiroAb/usr/bin/vantiro-app", true},
    };
    for (const auto& [mounted, path, isInside] : cases) {
        sandbox.setVariable("APPDIR", mounted);
        const QString executable = QString::fromUtf16(path);
        EXPECT_EQ(LoginItem::program(executable), isInside ? image : executable) << qPrintable(executable);
    }
}

TEST_F(LoginTest, TheModelShowsWhatTheSystemSays)
{
    want(true);
    EXPECT_TRUE(m_model.opensAtLogin());
    EXPECT_TRUE(entry().contains("\nExec=\"/home/dj/My \\\\\"\\\\$et\\\\\" 100%%/Vantiro.AppImage\"\n"))
        << entry().constData();
    want(false);
    EXPECT_FALSE(m_model.opensAtLogin());
    EXPECT_FALSE(QFileInfo::exists(m_own));

    for (const char* line : {"Hidden=true", "X-GNOME-Autostart-enabled = false"}) {
        test::Sandbox::writeFile(m_own, QByteArray("[Desktop Entry]\nExec=vantiro-app\n") + line + '\n');
        m_flow.refresh();
        m_scheduler.settle();
        EXPECT_FALSE(m_model.opensAtLogin()) << line;
    }
    QFile::remove(m_own);

    test::Sandbox::writeFile(m_systems, "[Desktop Entry]\nExec=vantiro-app\n[Other]\nHidden=true\n");
    m_flow.refresh();
    m_scheduler.settle();
    EXPECT_TRUE(m_model.opensAtLogin());
    want(false);
    EXPECT_FALSE(m_model.opensAtLogin());
    // The last of what is wanted in haste counts.
    m_flow.setOpensAtLogin(true);
    m_flow.setOpensAtLogin(false);
    want(true);
    EXPECT_TRUE(m_model.opensAtLogin());
    EXPECT_FALSE(m_model.errorMessage());
}

TEST_F(LoginTest, WhatCannotBeTurnedOnIsToldAndStaysOff)
{
    m_isTemporary = true;
    want(true);
    EXPECT_FALSE(m_model.opensAtLogin());
    EXPECT_EQ(m_model.errorMessage(), u"Move Vantiro to Applications first, then turn on Open at Login."_s);
    EXPECT_FALSE(QFileInfo::exists(m_own));

    m_isTemporary = false;
    test::Sandbox::writeFile(m_sandbox.path(u"config/autostart"_s), "a file where the folder should be");
    want(true);
    EXPECT_FALSE(m_model.opensAtLogin());
    EXPECT_TRUE(m_model.errorMessage()->startsWith(u"macOS did not change the login item: "_s));
}

TEST(RecordHotKey, TheKeyIsTakenOnlyWhileItIsWantedAndHasteIsOnePress)
{
    AppModel model(std::make_unique<SettingsStore>(), {}, {});
    int keys = 0;
    int actions = 0;
    HotKey* key = nullptr;
    RecordHotKey hotKey(
        model,
        [&] {
            auto made = std::make_unique<CountedKey>(keys);
            key = made.get();
            return made;
        },
        [&actions] { ++actions; });
    ASSERT_EQ(keys, 1);
    for (int press = 0; press < 3; ++press) {
        Q_EMIT key->pressed();
    }
    hotKey.press();
    EXPECT_EQ(actions, 1);
    model.setHotkeyEnabled(false);
    EXPECT_EQ(keys, 0);
    model.setHotkeyEnabled(true);
    EXPECT_EQ(keys, 1);
}

TEST(RecordHotKey, WhatTheUserDecidedOutweighsWhatIsAssumed)
{
    const test::Sandbox sandbox;
    const QString file = sandbox.path(u"settings.json"_s);
    {
        AppModel model(std::make_unique<SettingsStore>(file), {}, {});
        model.assumeHotkeyEnabled(false);
        EXPECT_FALSE(model.hotkeyEnabled());
        model.setHotkeyEnabled(true);
        model.flush();
    }
    AppModel model(std::make_unique<SettingsStore>(file), {}, {});
    model.assumeHotkeyEnabled(false);
    EXPECT_TRUE(model.hotkeyEnabled());
}

TEST(TrayPanel, ThePanelStandsBesideThePointerAndInsideTheScreen)
{
    const QRect screen(100, 30, 1000, 700);
    const QSize size(300, 250);
    const struct {
        QPoint pointer;
        QPoint corner;
    } cases[] = {
        {{600, 10}, {450, 30}},
        {{600, 100}, {450, 108}},
        {{1090, 725}, {800, 467}},
        {{90, 760}, {100, 480}},
    };
    for (const auto& [pointer, corner] : cases) {
        EXPECT_EQ(TrayPanel::corner(pointer, size, screen), corner) << pointer.x() << ", " << pointer.y();
    }
    EXPECT_EQ(TrayPanel::corner({600, 400}, size, {100, 30, 200, 100}), QPoint(100, 30));
}

}  // namespace vantiro
