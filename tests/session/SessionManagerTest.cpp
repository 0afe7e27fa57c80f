// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/session/SessionTest.h"

#include <QFileInfo>

#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// Far away in the ramp, so that a frame of this device in another one's take shows as a jump.
    constexpr std::int64_t elsewhere = 5'000'000;

    class SessionManagerTest : public test::SessionTest {
    protected:
        /// Waits until the stream of pw-play goes there and nowhere else but into a take.
        [[nodiscard]] static bool playsTo(const QString& sink, const QString& other)
        {
            return test::waitFor([&] {
                const QStringList now = targets(u"pw-play"_s);
                return now.contains(sink) && !now.contains(other);
            });
        }
        [[nodiscard]] static bool makesDefault(const QString& source)
        {
            return test::waitFor([&] {
                return output(u"pw-metadata"_s, {u"0"_s, u"default.audio.source"_s})
                    .contains(u"{\"name\":\"%1\"}"_s.arg(source));
            });
        }
        [[nodiscard]] QByteArray remembered() const
        {
            return test::Sandbox::readFile(m_sandbox.home() + u"/.local/state/wireplumber/restore-stream"_s);
        }
        void setRemembered(const QByteArray& lines) const
        {
            test::Sandbox::writeFile(
                m_sandbox.home() + u"/.local/state/wireplumber/restore-stream"_s, "[restore-stream]\n" + lines);
        }
        /// What is set on the node by hand, in every way that there is.
        static void silence(const QString& node)
        {
            const QString id = QString::number(nodeId(node));
            ASSERT_NE(id, u"0"_s);
            for (const QStringList& words :
                {QStringList{u"wpctl"_s, u"set-mute"_s, id, u"1"_s}, {u"wpctl"_s, u"set-volume"_s, id, u"0.2"_s},
                    {u"pw-cli"_s, u"set-param"_s, id, u"Props"_s, u"{ mute: true, channelVolumes: [ 0.1, 0.1 ] }"_s}}) {
                test::Program(words.front(), words.mid(1)).wait();
            }
        }
    };

}  // namespace

// A program is recorded behind its own volume, which the session manager sets as it was the last time.
TEST_F(SessionManagerTest, AProgramIsRecordedAtItsRememberedVolumeAndMute)
{
    const QString file = rampFile(SF_FORMAT_PCM_24);
    auto player = play(u"pw-play"_s, {file});
    const QString identifier = listed(player->pid())->bundleID.value_or(QString());
    // Cubic, so half of the scale is an eighth of the sound.
    output(u"wpctl"_s, {u"set-volume"_s, QString::number(nodeId(u"pw-play"_s)), u"0.5"_s});
    ASSERT_TRUE(test::waitFor([&] { return remembered().contains("channelVolumes=0.125;0.125;"); }))
        << remembered().constData();
    player.reset();
    player = play(u"pw-play"_s, {file});
    static_cast<void>(begin(SourceRef::app(identifier)));
    ASSERT_TRUE(recordsOn(1));
    EXPECT_NEAR(end().stats->peak, 0.125, 0.001);

    output(u"wpctl"_s, {u"set-mute"_s, QString::number(nodeId(u"pw-play"_s)), u"1"_s});
    ASSERT_TRUE(test::waitFor([&] { return remembered().contains("Music:mute=true"); })) << remembered().constData();
    static_cast<void>(begin(SourceRef::app(identifier)));
    ASSERT_TRUE(recordsOn(1));
    const RecorderState muted = end();
    EXPECT_EQ(muted.stats->peak, 0);
    for (const auto& column : expectRamp(muted)) {
        EXPECT_TRUE(column.empty());
    }
}

TEST_F(SessionManagerTest, WhatItRemembersOfOurselvesTouchesNoTake)
{
    QByteArray lines;
    for (const QByteArray who : {"media.role:Production", "application.name:vantiro", "node.name:vantiro-recorder"}) {
        const QByteArray key = "Input/Audio:" + who;
        lines += key + ":mute=true\n" + key + ":volume=0.1\n" + key + ":channelVolumes=0.1;0.1;\n";
    }
    endSessionManager();
    setRemembered(lines);
    ASSERT_TRUE(startSessionManager());
    const auto card = source(u"card"_s);
    for (int round = 0; round < 2; ++round) {
        static_cast<void>(begin(SourceRef::device(u"card"_s)));
        ASSERT_TRUE(recordsOn(0.5));
        silence(u"vantiro-recorder"_s);
        ASSERT_TRUE(recordsOn(0.5));
        const RecorderState take = end();
        expectThroughout(expectRamp(take), take);
    }
    expectIdle();
}

TEST_F(SessionManagerTest, AMissingSourceNeverBecomesAnother)
{
    const auto microphone = source(u"microphone"_s, elsewhere);
    ASSERT_TRUE(makesDefault(u"microphone"_s));
    for (const QStringList& source : {QStringList{u"--device"_s, u"card"_s}, {u"--app"_s, u"org.example.Decks"_s}}) {
        const auto result = run(QStringList{u"record"_s, u"--out"_s, takePath()} + source);
        EXPECT_EQ(result.status, 1);
        EXPECT_FALSE(result.errors.isEmpty());
        EXPECT_EQ(filesIn(QFileInfo(takePath()).path()), QStringList());
    }
    expectIdle();
}

TEST_F(SessionManagerTest, ATakeEndsWhereItsSourceVanishes)
{
    const auto microphone = source(u"microphone"_s, elsewhere);
    auto card = source(u"card"_s);
    ASSERT_TRUE(makesDefault(u"microphone"_s));
    const auto tool = record(takePath());
    ASSERT_TRUE(recordsOn(1));
    card.reset();
    EXPECT_EQ(tool->wait().status, 0);
    const RecorderState take = lastTake();
    EXPECT_EQ(take.endedBecause, u"device-lost"_s);
    const auto columns = expectRamp(take);
    expectThroughout(columns, take);
    EXPECT_LT(columns[0].back().content + columns[0].back().frames, elsewhere);
    expectIdle();
}

// A new one configures a client's converter anew, and the blocks that the source fails to send meanwhile are counted;
// so only the take that sees none come up is compared bit by bit.
TEST_F(SessionManagerTest, ItsRestartEndsNoTakeOfADevice)
{
    const auto card = source(u"card"_s);
    static_cast<void>(begin(SourceRef::device(u"card"_s)));
    ASSERT_TRUE(recordsOn(0.5));
    endSessionManager();
    ASSERT_TRUE(recordsOn(1));
    const RecorderState first = end();
    expectThroughout(expectRamp(first), first);

    static_cast<void>(begin(SourceRef::device(u"card"_s)));
    ASSERT_TRUE(recordsOn(0.5));
    ASSERT_TRUE(startSessionManager());
    ASSERT_TRUE(recordsOn(1));
    EXPECT_FALSE(end().endedBecause);
}

// The speakers are the daemon's own, as a stream's way to them is nobody else's affair: the take needs none of it.
TEST_F(SessionManagerTest, ItsRestartEndsNoTakeOfAProgram)
{
    const auto player = play(u"pw-play"_s, {rampFile(SF_FORMAT_PCM_24)});
    const QString identifier = listed(player->pid())->bundleID.value_or(QString());
    static_cast<void>(begin(SourceRef::app(identifier)));
    ASSERT_TRUE(recordsOn(0.5));
    endSessionManager();
    // Longer than a stream's last place is remembered.
    ASSERT_TRUE(recordsOn(1));
    ASSERT_TRUE(startSessionManager());
    ASSERT_TRUE(recordsOn(1));
    const RecorderState take = end();
    expectGoesOn(expectRamp(take), take);
}

// The session manager takes the stream's ports away and makes new ones, since the speakers differ in channels. What the
// program plays into its first two channels goes on in the take.
TEST_F(SessionManagerTest, AMovedStreamIsRecordedOn)
{
    const auto player = play(u"pw-play"_s, {rampFile(SF_FORMAT_PCM_24)});
    const QString identifier = listed(player->pid())->bundleID.value_or(QString());
    static_cast<void>(begin(SourceRef::app(identifier)));
    ASSERT_TRUE(recordsOn(1));
    for (const auto& [sink, other] : {std::pair(u"eight"_s, u"two"_s), std::pair(u"two"_s, u"eight"_s)}) {
        output(u"pw-metadata"_s, {QString::number(nodeId(u"pw-play"_s)), u"target.object"_s, sink});
        ASSERT_TRUE(playsTo(sink, other));
        ASSERT_TRUE(recordsOn(1));
    }
    const RecorderState take = end();
    expectGoesOn(expectRamp(take), take);
}

}  // namespace vantiro
