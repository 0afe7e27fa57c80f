// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/desktop/DesktopTest.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRect>

#include <chrono>
#include <cstdint>
#include <memory>

namespace vantiro::test {

/// A test of the real window: on a screen of its own with a window manager, driven by keys and by what a screen reader
/// does, and looked at through both. Inputs of the graph play in this process.
class WindowTest : public DesktopTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// An audio interface on the cable that plays noise up to this magnitude; 0 is silence.
    [[nodiscard]] std::unique_ptr<VirtualDevice> interface(
        const QString& name, const QString& description, float magnitude) const;
    /// A take of silence, which takes no room on the disk.
    static void writeSilentTake(const QString& path, int seconds);
    /// As if the user had set them in an earlier run.
    static void writeSettings(const QJsonObject& settings);

    /// Starts the application and waits until its window stands on the screen and has the keyboard.
    void open(const QStringList& arguments = {});
    /// The running application.
    [[nodiscard]] Program& app() { return *m_app; }
    /// Expects that it ends by itself, without a fault.
    void expectEnd(std::chrono::milliseconds limit = std::chrono::seconds(20));

    /// Waits for a line of the accessibility tree that holds this text; without one the test fails. A line is the role,
    /// the name in quotes, the states that not everything has, and behind a colon the description.
    QString sees(const QString& text);
    void misses(const QString& text);
    /// All lines.
    [[nodiscard]] QStringList tree();
    /// Does the action of the element with this name, of several the one with this number.
    void press(const QString& name, int number = 0);
    /// Strikes keys or chords such as ctrl+r, one after the other.
    void key(const QStringList& keys);
    /// Presses a mouse button at that place of the screen.
    void click(const QPoint& place);
    /// Waits until the window with that title stands on the screen with something drawn in it; where.
    QRect waitForWindow(const QString& title = QStringLiteral("Vantiro"));
    void waitForNoWindow(const QString& title = QStringLiteral("Vantiro"));
    /// The window as it stands on the screen.
    [[nodiscard]] QImage screenshot();

    /// Waits until a recorder runs a take of at least so many seconds; its state.
    [[nodiscard]] static RecorderState waitForTake(double seconds = 0);
    /// Waits until no take runs. The last one, whose file has to be whole.
    [[nodiscard]] static RecorderState waitForWholeTake();

private:
    /// Calls a method of the screen.
    QJsonValue ask(const QString& method, const QJsonArray& arguments = {});
    QJsonObject nextAnswer();

    QProcess m_screen;
    std::unique_ptr<Program> m_app;
};

}  // namespace vantiro::test
