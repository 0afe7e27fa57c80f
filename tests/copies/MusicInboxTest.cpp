// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/MusicInbox.h"

#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

namespace vantiro::test {

namespace {

    using MusicInboxTest = SandboxTest;

    QStringList allIn(const QString& folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

}  // namespace

TEST_F(MusicInboxTest, IsFoundFromAnyFolderAboveIt)
{
    struct Case {
        const char* picked;
        QStringList folders;
        const char* inbox;
    };
    const QString below = QStringLiteral("/Automatically Add to Music.localized");
    const QString named = QStringLiteral("/m/Automatically Add to Music");
    for (const Case& one : {
             Case{"/m/Automatically Add to Music", {named}, "/m/Automatically Add to Music"},
             Case{"/m/Automatically Add to Music", {named + below},
                 "/m/Automatically Add to Music/Automatically Add to Music.localized"},
             Case{"/m/", {QStringLiteral("/m/Media") + below, QStringLiteral("/m/Media.localized") + below},
                 "/m/Media.localized/Automatically Add to Music.localized"},
             Case{"/m", {QStringLiteral("/m/Media") + below}, "/m/Media/Automatically Add to Music.localized"},
             Case{"/m", {QStringLiteral("/m/Music/Media.localized") + below},
                 "/m/Music/Media.localized/Automatically Add to Music.localized"},
             Case{"/m", {QStringLiteral("/m")}, nullptr},
         }) {
        const auto inbox = MusicInbox::resolve(
            QString::fromLatin1(one.picked), [&](const QString& path) { return one.folders.contains(path); });
        EXPECT_EQ(inbox, one.inbox == nullptr ? std::nullopt : std::optional(QString::fromLatin1(one.inbox)));
    }
}

TEST_F(MusicInboxTest, IsThePickedFolderWhereThereIsNoOtherAndItCanBeWritten)
{
    const QString picked = m_sandbox.path(QStringLiteral("Library"));
    EXPECT_EQ(MusicInbox::inboxFor(picked).error(), MusicInbox::refusal(picked));
    EXPECT_TRUE(errorText(MusicInbox::refusal(picked)).contains(u"folder in Library. In Music"));
    ASSERT_TRUE(QDir().mkpath(picked));
    EXPECT_EQ(MusicInbox::inboxFor(picked), picked);
    {
        SettingsStore settings(m_sandbox.path(QStringLiteral("settings.json")));
        MusicInbox::save(picked, settings);
    }
    SettingsStore settings(m_sandbox.path(QStringLiteral("settings.json")));
    EXPECT_EQ(MusicInbox::chosen(settings), picked);

    const QString home = m_sandbox.home();
    EXPECT_EQ(MusicInbox::locateInbox(std::nullopt, home), std::nullopt);
    EXPECT_EQ(MusicInbox::locateInbox(picked + u'2', home), std::nullopt);
    EXPECT_EQ(MusicInbox::locateInbox(picked, home), picked);
    ASSERT_TRUE(QDir().mkpath(MusicInbox::defaultFolder(home)));
    EXPECT_EQ(MusicInbox::locateInbox(picked, home), MusicInbox::defaultFolder(home));
    MusicInbox::save(std::nullopt, settings);
    EXPECT_EQ(MusicInbox::chosen(settings), std::nullopt);
}

TEST_F(MusicInboxTest, GetsWholeCopiesAndKeepsTheOlderOnes)
{
    const QString file = m_sandbox.path(QStringLiteral("Copies/Set.m4a"));
    const QString inbox = m_sandbox.path(QStringLiteral("media/inbox"));
    ASSERT_TRUE(QDir().mkpath(inbox));
    Sandbox::writeFile(file, "first");
    ASSERT_TRUE(MusicInbox::addToMusic(file, inbox));
    const QByteArray second(700'000, 's');
    Sandbox::writeFile(file, second);
    ASSERT_TRUE(MusicInbox::addToMusic(file, inbox));

    const QStringList names = allIn(inbox);
    ASSERT_EQ(names.size(), 2);
    EXPECT_THAT(names.first().toStdString(), ::testing::MatchesRegex("Set [0-9a-f]{4}\\.m4a"));
    EXPECT_EQ(Sandbox::readFile(inbox + u'/' + names.first()), second);
    EXPECT_EQ(Sandbox::readFile(inbox + QStringLiteral("/Set.m4a")), "first");
    EXPECT_EQ(allIn(m_sandbox.path(QStringLiteral("media"))), QStringList{QStringLiteral("inbox")});
    EXPECT_FALSE(Sandbox::readFile(VantiroPaths::exportsFile()).contains(".vantiro-")) << "it was noted, and is gone";
}

TEST_F(MusicInboxTest, IsStagedInItselfWhereNothingCanBeMadeBesideIt)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may write everywhere";
    }
    const QString file = m_sandbox.path(QStringLiteral("Set.m4a"));
    const QString inbox = m_sandbox.path(QStringLiteral("media/inbox"));
    ASSERT_TRUE(QDir().mkpath(inbox));
    Sandbox::writeFile(file, "audio");
    const QByteArray media = QFile::encodeName(m_sandbox.path(QStringLiteral("media")));
    ASSERT_EQ(::chmod(media.constData(), 0500), 0);
    EXPECT_TRUE(MusicInbox::addToMusic(file, inbox));
    EXPECT_EQ(::chmod(media.constData(), 0700), 0);
    EXPECT_EQ(allIn(inbox), QStringList{QStringLiteral("Set.m4a")});
}

TEST_F(MusicInboxTest, GetsNothingOfAFailure)
{
    const QString file = m_sandbox.path(QStringLiteral("Set.m4a"));
    const QString media = m_sandbox.path(QStringLiteral("media"));
    const QString inbox = media + QStringLiteral("/inbox");
    ASSERT_TRUE(QDir().mkpath(media));
    EXPECT_EQ(errorText(MusicInbox::addToMusic(file, std::nullopt).error().error),
        QStringLiteral("Music's Automatically Add to Music folder is missing"));
    // Staged beside the inbox, which is no folder; then there is nothing to stage.
    Sandbox::writeFile(inbox, "no folder");
    Sandbox::writeFile(file, "audio");
    EXPECT_FALSE(MusicInbox::addToMusic(file, inbox));
    EXPECT_EQ(allIn(media), QStringList{QStringLiteral("inbox")});
    ASSERT_TRUE(QFile::remove(inbox) && QDir().mkpath(inbox) && QFile::remove(file) && QDir().mkpath(file));
    EXPECT_FALSE(MusicInbox::addToMusic(file, inbox));
    EXPECT_EQ(allIn(media), QStringList{QStringLiteral("inbox")});
    EXPECT_EQ(allIn(inbox), QStringList());
}

TEST_F(MusicInboxTest, GivesUpForATakeThatNeedsTheRoomAndForAUser)
{
    using Stage = CopyFailure::Stage;
    const QString file = m_sandbox.path(QStringLiteral("Set.m4a"));
    const QString media = m_sandbox.path(QStringLiteral("media"));
    const QString inbox = media + QStringLiteral("/inbox");
    ASSERT_TRUE(QDir().mkpath(inbox));
    Sandbox::writeFile(file, "audio");
    ASSERT_TRUE(QFile::resize(file, 17LL << 20));  // More than one piece.
    const QString noRoom =
        QStringLiteral("there is no room for a copy in %1. Free some space, or choose another folder.").arg(media);
    struct Case {
        int roomyLooks;
        int patientAnswers;
        Stage stage;
        QString words;
    };
    for (const Case& one : {
             Case{0, 9, Stage::refused, noRoom},
             Case{2, 9, Stage::failed, noRoom},
             Case{9, 1, Stage::cancelled, QStringLiteral("The copy was stopped.")},
         }) {
        int looks = 0;
        int answers = 0;
        std::chrono::steady_clock::time_point now;
        const auto added = MusicInbox::addToMusic(file, inbox, [&] { return ++answers > one.patientAnswers; },
            {.volume =
                    [&](const QString&) {
                        return CopyRoom::Volume{.freeBytes = ++looks > one.roomyLooks ? 0 : std::int64_t{1} << 40};
                    },
                .now = [&] { return now += CopyRoomWatch::interval; }});
        ASSERT_FALSE(added);
        EXPECT_EQ(added.error().stage, one.stage);
        EXPECT_EQ(errorText(added.error().error), one.words);
        EXPECT_EQ(allIn(media), QStringList{QStringLiteral("inbox")});
        EXPECT_EQ(allIn(inbox), QStringList());
    }
}

}  // namespace vantiro::test
