// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/VantiroPaths.h"
#include "tests/desktop/WindowTest.h"

#include <QSet>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    constexpr float goodLevel = 0.4F;
    constexpr float lowLevel = 0.05F;

    /// From 0 to 1; pictures of different sizes have nothing in common.
    double shareThatDiffers(const QImage& first, const QImage& second)
    {
        if (first.size() != second.size() || first.isNull()) {
            return 1;
        }
        std::int64_t different = 0;
        for (int y = 0; y < first.height(); ++y) {
            for (int x = 0; x < first.width(); ++x) {
                different += first.pixel(x, y) != second.pixel(x, y) ? 1 : 0;
            }
        }
        return static_cast<double>(different) / (static_cast<double>(first.width()) * first.height());
    }

    /// A window that has found a mixer.
    class WindowControlsTest : public WindowTest {
    protected:
        void start(QJsonObject settings = {})
        {
            settings[u"didSetup"_s] = true;
            settings[u"takeCopy"_s] = u"off"_s;
            writeSettings(settings);
            m_mixer = interface(u"mixer"_s, u"Club Mixer"_s, goodLevel);
            m_other = interface(u"other"_s, u"Other Mixer"_s, lowLevel);
            open();
            sees(u"push button 'Club Mixer, Picked automatically'"_s);
        }

        /// What a screen reader says of the element that has the keyboard: role and name.
        [[nodiscard]] QString focused()
        {
            const QString line = tree().filter(u" focused"_s).value(0).trimmed();
            return line.left(line.lastIndexOf(u'\'') + 1);
        }

        std::unique_ptr<VirtualDevice> m_mixer;
        std::unique_ptr<VirtualDevice> m_other;
    };

}  // namespace

TEST_F(WindowControlsTest, EveryControlOfBothFormsHasItsNameAndItsRole)
{
    start();
    const QStringList always{u"push button 'Vantiro menu'"_s, u"push button 'SETUP'"_s, u"push button 'TAKES'"_s,
        u"push button 'SETTINGS'"_s, u"push button 'Minimise'"_s, u"push button 'Close'"_s, u"push button 'Record'"_s,
        u"push button 'Club Mixer, Picked automatically'"_s, u"push button 'No take yet'"_s};
    const QStringList further{u"'Level meter'"_s, u"push button 'Detect Again'"_s, u"label 'Club Mixer connected'"_s,
        u"label 'Sample rate 48,000 Hz'"_s};
    const auto expectAll = [this](const QStringList& names, const QStringList& others) {
        const QString lines = tree().join(u'\n');
        for (const QString& name : names) {
            EXPECT_TRUE(lines.contains(name)) << qPrintable(name + u" is missing in:\n"_s + lines);
        }
        for (const QString& name : others) {
            EXPECT_FALSE(lines.contains(name)) << qPrintable(name);
        }
        EXPECT_EQ(lines.count(u"push button 'Record'"_s), 2) << "the deck's centre and the key";
        EXPECT_FALSE(lines.contains(u"push button ''"_s)) << qPrintable(lines);
    };
    expectAll(always + QStringList{u"push button 'ADVANCED'"_s}, further);
    const QSize simple = waitForWindow().size();
    EXPECT_EQ(simple, QSize(480, 580));

    press(u"ADVANCED"_s);
    sees(u"push button 'SIMPLE'"_s);
    expectAll(always + further, {u"push button 'ADVANCED'"_s});
    EXPECT_TRUE(waitFor([this] { return waitForWindow().size() == QSize(920, 620); }, 3s));
    press(u"SIMPLE"_s);
    EXPECT_TRUE(waitFor([this] { return waitForWindow().size() == QSize(480, 580); }, 3s));

    // Every page, and the way back.
    for (const QString& page : {u"TAKES"_s, u"SETTINGS"_s}) {
        press(page);
        press(u"DECK"_s);
        sees(u"push button 'SETTINGS'"_s);
        misses(u"push button 'DECK'"_s);
    }
    EXPECT_EQ(tree().filter(u"push button 'Record'"_s).size(), 2);
}

TEST_F(WindowControlsTest, ATakeIsMadeByActionsAlone)
{
    start();
    press(u"Record"_s, 0);
    sees(u"push button 'Stop recording'"_s);
    sees(u"push button 'Club Mixer, Recording from this source'"_s);
    const RecorderState take = waitForTake(1);
    EXPECT_EQ(take.deviceName, u"Club Mixer"_s);
    press(u"Stop recording"_s, 1);
    EXPECT_EQ(waitForWholeTake().path, take.path);
    sees(u"push button 'Record'"_s);
    misses(u"alert"_s);
}

TEST_F(WindowControlsTest, AnotherSourceIsChosenInTheMenu)
{
    start();
    press(u"Club Mixer, Picked automatically"_s);
    sees(u"popup menu 'Sources'"_s);
    key({u"Escape"_s});
    misses(u"popup menu"_s);
    press(u"Club Mixer, Picked automatically"_s);
    press(u"Other Mixer"_s);
    misses(u"popup menu"_s);
    sees(u"push button 'Other Mixer'"_s);

    // Up from "Open the setup guide" past what is in between, to the first one.
    press(u"Other Mixer"_s);
    sees(u"popup menu 'Sources'"_s);
    key({u"Up"_s, u"Up"_s, u"Up"_s, u"Return"_s});
    misses(u"popup menu"_s);
    sees(u"push button 'Club Mixer'"_s);
}

TEST_F(WindowControlsTest, AllOfItIsReachedByKeys)
{
    start();
    QSet<QString> expected;
    for (const QString& line : tree().filter(u"push button"_s)) {
        if (line.contains(u" focusable"_s)) {
            expected.insert(line.trimmed().left(line.trimmed().lastIndexOf(u'\'') + 1));
        }
    }
    expected.remove(u"push button 'No take yet'"_s);
    QSet<QString> reached;
    for (qsizetype step = 0; step < 2 * expected.size() + 4 && !reached.contains(expected); ++step) {
        key({u"Tab"_s});
        reached.insert(focused());
    }
    EXPECT_TRUE(reached.contains(expected))
        << "not reached: " << qPrintable((expected - reached).values().join(u", "_s));

    key({u"F10"_s});
    sees(u"popup menu 'Vantiro menu'"_s);
    for (const QString& entry : {u"Record"_s, u"Show Takes"_s, u"Settings…"_s, u"Close Window"_s, u"Quit"_s}) {
        sees(u"menu item '%1'"_s.arg(entry));
    }
    key({u"Escape"_s});
    misses(u"popup menu"_s);
    key({u"F10"_s, u"Down"_s, u"Return"_s});
    misses(u"popup menu"_s);
    const QString path = waitForTake(0.6).path;
    key({u"F10"_s});
    sees(u"menu item 'Stop Recording'"_s);
    key({u"Escape"_s});
    misses(u"popup menu"_s);
    key({u"ctrl+r"_s});
    EXPECT_EQ(waitForWholeTake().path, path);

    key({u"ctrl+shift+t"_s});
    sees(u"push button 'DECK'"_s);
    key({u"Escape"_s});
    sees(u"push button 'SETTINGS'"_s);
    key({u"ctrl+comma"_s});
    sees(u"push button 'DECK'"_s);
}

TEST_F(WindowControlsTest, TheStillPicturesShowWhatTheWindowShows)
{
    const QString folder = m_sandbox.path(u"stills"_s);
    Program stills(QStringLiteral(VANTIRO_APP), {u"--snapshot"_s, folder});
    // They take much of a machine's time.
    EXPECT_EQ(stills.wait(60s).status, 0);
    m_sandbox.setVariable("QT_SCALE_FACTOR", "2");
    constexpr double mostDifference = 0.001;
    const auto expectAlike = [&](const QString& name, const QString& element) {
        SCOPED_TRACE(qPrintable(name));
        open();
        sees(element);
        const QImage still = QImage(folder + u'/' + name).convertToFormat(QImage::Format_RGB32);
        double difference = 1;
        // Keys and lamps may still be on their way.
        EXPECT_TRUE(waitFor(
            [&] {
                difference = shareThatDiffers(screenshot(), still);
                return difference < mostDifference;
            },
            5s))
            << difference * 100 << " % of the pixels differ";
        key({u"ctrl+q"_s});
        expectEnd();
    };
    expectAlike(u"deck-no-source.png"_s, u"push button 'Open setup'"_s);
    // The stills show the eighth take.
    for (int number = 1; number < 8; ++number) {
        writeSilentTake(VantiroPaths::takes() + u"/mix-2026-01-0%1_20-00-00.caf"_s.arg(number), 60);
    }
    m_mixer = interface(u"mixer"_s, u"USB Audio Interface"_s, 0);
    expectAlike(u"deck-ready.png"_s, u"push button 'USB Audio Interface, Picked automatically'"_s);
}

TEST_F(WindowControlsTest, AsksBeforeItStopsATakeIfThatIsWanted)
{
    start({{u"confirmStop"_s, true}});
    key({u"ctrl+r"_s});
    const QString path = waitForTake().path;
    const QString question = u"alert 'Stop and save this take?'"_s;
    for (const bool byKey : {true, false}) {
        press(u"Stop recording"_s, byKey ? 1 : 0);
        sees(question);
        if (byKey) {
            key({u"Escape"_s});
        } else {
            press(u"Keep Recording"_s);
        }
        misses(question);
        EXPECT_TRUE(takeGrows(0.4));
    }
    press(u"Stop recording"_s, 0);
    press(u"Stop and Save"_s);
    misses(question);
    EXPECT_EQ(waitForWholeTake().path, path);
}

TEST_F(WindowControlsTest, TellsThatTheInputWentAndIsSilentAfterOneDismissal)
{
    start();
    key({u"ctrl+r"_s});
    static_cast<void>(waitForTake(0.6));
    m_mixer->disconnect();
    const QString alert = sees(u"alert 'Vantiro needs your attention'"_s);
    EXPECT_TRUE(
        alert.contains(u"Club Mixer was disconnected. The take ends where the device left, and the file is intact."_s))
        << qPrintable(alert);
    EXPECT_EQ(waitForWholeTake().endedBecause, u"device-lost"_s);
    press(u"OK"_s);
    misses(u"alert"_s);
    sees(u"push button 'Record'"_s);
}

}  // namespace vantiro::test
