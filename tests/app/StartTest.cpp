// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StartArguments.h"
#include "app/WindowPlace.h"
#include "platform/desktop/Appearance.h"
#include "tests/support/Sandbox.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Task = StartArguments::Task;

    class StartTest : public test::SandboxTest { };

}  // namespace

TEST(StartArguments, AFlagWithoutItsFolderAndWordsOfTheDesktopAreAPlainStart)
{
    const struct {
        QStringList words;
        Task task;
        QString folder = {};
    } cases[] = {
        {{}, Task::window},
        {{u"--snapshot"_s}, Task::window},
        {{u"--write-sample-takes"_s}, Task::window},
        {{u"vantiro://record"_s, u"--session"_s, u"17"_s}, Task::window},
        {{u"--snapshot"_s, u"/a"_s}, Task::snapshot, u"/a"_s},
        {{u"--write-sample-takes"_s, u"/b"_s}, Task::sampleTakes, u"/b"_s},
        {{u"--write-sample-takes"_s, u"/b"_s, u"--snapshot"_s, u"/a"_s}, Task::snapshot, u"/a"_s},
        {{u"--write-sample-takes"_s, u"/b"_s, u"--snapshot"_s}, Task::sampleTakes, u"/b"_s},
        {{u"--gallery"_s}, Task::gallery},
    };
    for (const auto& [words, task, folder] : cases) {
        const auto arguments = StartArguments::read(words);
        ASSERT_TRUE(arguments) << qPrintable(words.join(u' '));
        EXPECT_EQ(arguments->task, task) << qPrintable(words.join(u' '));
        EXPECT_EQ(arguments->folder, folder) << qPrintable(words.join(u' '));
    }
    EXPECT_EQ(StartArguments::read({u"--session"_s, u"vantiro://stop"_s, u"17"_s, u"Vantiro:x"_s})->links,
        (QStringList{u"vantiro://stop"_s, u"Vantiro:x"_s}));
    EXPECT_FALSE(StartArguments::read({u"--gallery"_s, u"--grb"_s, u"x.png"_s}));
}

TEST(WindowPlace, APlaceWhereTheWindowCouldNotBeTakenHoldOfIsNotUsed)
{
    const QRect left(0, 0, 1920, 1080);
    const QRect right(1920, 200, 1280, 1024);
    const struct {
        QPoint place;
        QList<QRect> screens;
        bool isUsed;
    } cases[] = {
        {{100, 100}, {left}, true},
        {{-200, 50}, {left}, true},
        {{-400, 50}, {left}, false},
        {{1900, 300}, {left}, false},
        {{1900, 300}, {left, right}, true},
        {{2000, 100}, {left, right}, false},
        {{100, 1070}, {left}, false},
        {{100, -30}, {left}, false},
        {{100, 100}, {}, false},
    };
    for (const auto& [place, screens, isUsed] : cases) {
        EXPECT_EQ(WindowPlace::reachable(place, screens).has_value(), isUsed) << place.x() << ", " << place.y();
    }
}

TEST_F(StartTest, KdesSettingForMotionCountsOnKdeAloneAndTheEnvironmentBeforeIt)
{
    int count = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    test::Sandbox::writeFile(m_sandbox.path(u"config/kdeglobals"_s), "[KDE]\nAnimationDurationFactor=0\n");
    m_sandbox.setVariable("XDG_CONFIG_HOME", m_sandbox.path(u"config"_s).toUtf8());
    m_sandbox.setVariable("VANTIRO_REDUCE_MOTION", std::nullopt);
    const auto reduced = [this](const char* desktop) {
        m_sandbox.setVariable("XDG_CURRENT_DESKTOP", desktop);
        return Appearance(nullptr).reducedMotion();
    };
    EXPECT_TRUE(reduced("KDE"));
    EXPECT_FALSE(reduced("GNOME"));
    m_sandbox.setVariable("VANTIRO_REDUCE_MOTION", "0");
    EXPECT_FALSE(reduced("KDE"));
    m_sandbox.setVariable("VANTIRO_REDUCE_MOTION", "1");
    EXPECT_TRUE(reduced("GNOME"));
}

}  // namespace vantiro
