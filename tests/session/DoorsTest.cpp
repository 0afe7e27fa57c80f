// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/session/SessionTest.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    struct Door : test::Row {
        QString program;
        QStringList arguments;  ///< Before the file.
        int subtype = SF_FORMAT_PCM_24;
        QString identifier;
        QString shownName;
    };

    // The players' binaries have names of their own: pw-play and paplay are links to pw-cat and pacat.
    const std::vector<Door> doors{
        {{"Native"}, u"pw-play"_s, {}, SF_FORMAT_PCM_24, u"pw-cat"_s, u"pw-cat"_s},
        // The socket's pid is the server's here, so the program's own claim of its pid was checked.
        {{"PulseAudio"}, u"paplay"_s, {}, SF_FORMAT_PCM_24, u"pacat"_s, u"paplay"_s},
        // The plug-in has no packed 24 bits, and calls itself "PipeWire ALSA [aplay]".
        {{"Alsa"}, u"aplay"_s, {u"-q"_s, u"-D"_s, u"pipewire"_s}, SF_FORMAT_PCM_32, u"aplay"_s, u"aplay"_s},
    };

    /// A desktop runs what a terminal starts as the terminal's, so there its identifier is the terminal's.
    bool belongsToApplication()
    {
        return test::Sandbox::readFile(u"/proc/self/cgroup"_s).contains("/app-");
    }

    class DoorsTest : public test::SessionTest, public ::testing::WithParamInterface<Door> { };
    using JackDoorTest = test::SessionTest;

}  // namespace

TEST_P(DoorsTest, IsListedAndRecordedBitByBit)
{
    const Door& door = GetParam();
    const auto player = play(door.program, door.arguments + QStringList{rampFile(door.subtype)});
    const auto process = listed(player->pid());
    ASSERT_TRUE(process);
    const QString identifier = process->bundleID.value_or(QString());
    EXPECT_TRUE(identifier == door.identifier || belongsToApplication()) << qPrintable(identifier);
    EXPECT_TRUE(process->name == door.shownName || belongsToApplication()) << qPrintable(process->name);

    const RecorderState state = begin(SourceRef::app(identifier));
    EXPECT_EQ(state.deviceUID, u"app:"_s + identifier);
    EXPECT_EQ(state.deviceName, process->name);
    ASSERT_TRUE(recordsOn(1.5));
    EXPECT_TRUE(player->isRunning());
    const RecorderState take = end();
    expectThroughout(expectRamp(take), take);
    expectIdle();
}

INSTANTIATE_TEST_SUITE_P(All, DoorsTest, ::testing::ValuesIn(doors), test::rowName);

// A JACK client has no stream that a session manager would link: its ports are all there is, and it connects them. So
// main and cue come from where they go, which is a device of more than two channels.
TEST_F(JackDoorTest, HasItsMainOutAndItsCueApart)
{
    const auto player = play(u"pw-jack"_s,
        {QStringLiteral(VANTIRO_JACK_PLAYER), u"eight:playback_FL"_s, u"eight:playback_FR"_s, u"eight:playback_FC"_s,
            u"eight:playback_LFE"_s});
    const auto process = listed(player->pid());
    ASSERT_TRUE(process);
    const QString identifier = process->bundleID.value_or(QString());
    EXPECT_TRUE(identifier == u"vantiro_jack_player"_s || belongsToApplication()) << qPrintable(identifier);

    for (const std::vector<std::int64_t>& channels :
        {std::vector<std::int64_t>{3, 4}, std::vector<std::int64_t>{1, 2, 3, 4}}) {
        EXPECT_EQ(begin(SourceRef::app(identifier), channels).channels, channels);
        ASSERT_TRUE(recordsOn(1.5));
        const RecorderState take = end();
        std::vector<int> played(channels.begin(), channels.end());
        std::ranges::for_each(played, [](int& channel) { --channel; });
        expectThroughout(expectRamp(take, played), take);
    }
    expectIdle();
}

}  // namespace vantiro
