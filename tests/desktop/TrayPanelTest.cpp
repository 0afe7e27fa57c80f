// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/WindowTest.h"

#include <csignal>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    const QString panelTitle = u"Vantiro Panel"_s;

    /// The window beside a tray that has the application's item.
    class TrayPanelTest : public WindowTest {
    protected:
        void SetUp() override
        {
            WindowTest::SetUp();
            if (IsSkipped() || HasFatalFailure()) {
                return;
            }
            m_tray =
                std::make_unique<Program>(u"/usr/bin/python3"_s, QStringList{QStringLiteral(VANTIRO_MADE_TRAY), m_log});
            ASSERT_TRUE(waitFor([this] { return told().contains(u"ready"_s); }));
            writeSettings({{u"didSetup"_s, true}, {u"takeCopy"_s, u"off"_s}, {u"confirmStop"_s, true}});
            m_mixer = interface(u"mixer"_s, u"Club Mixer"_s, 0.4F);
            m_booth = interface(u"booth"_s, u"Booth Mixer"_s, 0.0F);
            open();
            sees(u"push button 'Club Mixer, Picked automatically'"_s);
            ASSERT_TRUE(waitFor([this] { return told().contains(u"menu: Record"_s); }));
        }

        void TearDown() override
        {
            m_tray.reset();
            WindowTest::TearDown();
        }

        [[nodiscard]] QString told() const { return QString::fromUtf8(Sandbox::readFile(m_log)); }
        /// Presses the item; where the panel stands.
        QRect openPanel()
        {
            m_tray->signal(SIGUSR1);
            const QRect place = waitForWindow(panelTitle);
            sees(u"frame 'Vantiro Panel' active"_s);
            return place;
        }

        const QString m_log = m_sandbox.path(u"tray"_s);
        std::unique_ptr<Program> m_tray;
        std::unique_ptr<VirtualDevice> m_mixer;
        std::unique_ptr<VirtualDevice> m_booth;
    };

}  // namespace

TEST_F(TrayPanelTest, ATakeIsStartedAndStoppedWithTheWindowClosedAndOpenedAgainMeanwhile)
{
    press(u"Close"_s);
    waitForNoWindow();
    openPanel();
    // Nobody hears the source now.
    misses(u"Level meter"_s);
    press(u"Record"_s);
    const RecorderState take = waitForTake(1.2);
    sees(u"0:0"_s);
    EXPECT_TRUE(waitFor([this] { return told().contains(u"title: Vantiro 0:0"_s); })) << qPrintable(told());
    sees(u"Club Mixer, Recording from this source"_s);

    press(u"Show Takes"_s);
    waitForNoWindow(panelTitle);
    waitForWindow();
    sees(u"push button 'DECK'"_s);
    EXPECT_TRUE(takeGrows(0.4));
    openPanel();
    sees(u"Level meter"_s);
    // Its key never asks.
    press(u"Stop recording"_s, 1);
    EXPECT_EQ(waitForWholeTake().path, take.path);

    sees(u"push button 'Record'"_s);
    key({u"ctrl+alt+super+r"_s});
    static_cast<void>(waitForTake(0.5));
    key({u"ctrl+alt+super+r"_s});
    static_cast<void>(waitForWholeTake());
}

TEST_F(TrayPanelTest, ThePanelGoesWhenItIsLeft)
{
    const QRect place = openPanel();
    EXPECT_EQ(place.width(), 300);
    click(place.topLeft() - QPoint(40, 40));
    waitForNoWindow(panelTitle);
    static_cast<void>(waitFor([] { return false; }, 350ms));

    openPanel();
    m_tray->signal(SIGUSR1);
    waitForNoWindow(panelTitle);
    static_cast<void>(waitFor([] { return false; }, 350ms));

    // Escape leaves the list of sources first.
    openPanel();
    press(u"Club Mixer, Picked automatically"_s, 1);
    sees(u"popup menu 'Sources'"_s);
    key({u"Escape"_s});
    misses(u"popup menu 'Sources'"_s);
    press(u"Club Mixer, Picked automatically"_s, 1);
    press(u"Booth Mixer"_s);
    sees(u"push button 'Booth Mixer'"_s);
    key({u"Escape"_s});
    waitForNoWindow(panelTitle);
}

}  // namespace vantiro::test
