// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/DesktopTest.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QStandardPaths>

#include <csignal>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    /// A compositor that shows its windows to nobody.
    class WaylandTest : public DesktopTest {
    protected:
        void SetUp() override
        {
            if (QStandardPaths::findExecutable(u"weston"_s).isEmpty() && !qEnvironmentVariableIsSet("CI")) {
                GTEST_SKIP() << "Weston is not installed, so nothing is tested under Wayland here.";
            }
            DesktopTest::SetUp();
            m_sandbox.setVariable("WAYLAND_DISPLAY", "vantiro-test");
            m_sandbox.setVariable("QT_QPA_PLATFORM", "wayland");
            m_sandbox.setVariable("QT_QUICK_BACKEND", "software");
            // Without a seat, as here, Qt's own way to input methods ends in a crash.
            m_sandbox.setVariable("QT_IM_MODULE", "compose");
            Sandbox::writeFile(m_sandbox.path(u"weston.ini"_s),
                "[shell]\nbackground-color=0xff808080\npanel-position=none\nanimation=none\n"
                "startup-animation=none\nclose-animation=none\n");
            // Only a compositor that is being debugged lets anybody take pictures.
            m_compositor = std::make_unique<Program>(u"weston"_s,
                QStringList{u"--backend=headless-backend.so"_s, u"--use-pixman"_s, u"--socket=vantiro-test"_s,
                    u"--width=%1"_s.arg(width), u"--height=%1"_s.arg(height), u"--idle-time=0"_s,
                    u"--config="_s + m_sandbox.path(u"weston.ini"_s), u"--debug"_s,
                    u"--log="_s + m_sandbox.path(u"weston.log"_s)});
            ASSERT_TRUE(waitFor([this] { return coveredShare() == 0 || !m_compositor->isRunning(); }));
        }

        void TearDown() override
        {
            if (m_compositor) {
                m_compositor->signal(SIGTERM);
                m_compositor->wait();
            }
            DesktopTest::TearDown();
        }

        /// What all windows together look like; nothing if that could not be had.
        [[nodiscard]] QImage screenshot() const
        {
            const QString folder = m_sandbox.path(u"screenshots"_s);
            QDir(folder).removeRecursively();
            QDir().mkpath(folder);
            // It writes to the folder that it runs in.
            Program program(u"env"_s, {u"--chdir="_s + folder, u"timeout"_s, u"5"_s, u"weston-screenshooter"_s});
            program.wait();
            const QStringList files = QDir(folder).entryList(QDir::Files);
            return files.isEmpty() ? QImage()
                                   : QImage(folder + u'/' + files.front()).convertToFormat(QImage::Format_RGB32);
        }

        /// How much of the screen does not show the background, from 0 to 1; 1 without a picture of it.
        [[nodiscard]] double coveredShare() const
        {
            const QImage picture = screenshot();
            std::int64_t covered = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x) {
                    covered += picture.pixel(x, y) != qRgb(0x80, 0x80, 0x80) ? 1 : 0;
                }
            }
            return picture.isNull() ? 1 : static_cast<double>(covered) / (width * height);
        }

        static constexpr int width = 800;
        static constexpr int height = 700;

        std::unique_ptr<Program> m_compositor;
    };

}  // namespace

TEST_F(WaylandTest, TheWindowIsDrawnAndGoesWhenItIsToldTo)
{
    Program app(QStringLiteral(VANTIRO_APP), {});
    constexpr double windowShare = 480.0 * 580 / (width * height);
    EXPECT_TRUE(waitFor([&] { return coveredShare() > 0.95 * windowShare || !app.isRunning(); }, 30s));
    ASSERT_TRUE(app.isRunning()) << qPrintable(app.wait().errors);
    app.signal(SIGTERM);
    const auto result = app.wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    EXPECT_TRUE(waitFor([this] { return coveredShare() == 0; }));
}

}  // namespace vantiro::test
