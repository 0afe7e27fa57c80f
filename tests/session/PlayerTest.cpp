// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/TakePlayer.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "platform/rig/RampSignal.h"
#include "tests/session/SessionTest.h"
#include "tests/takes/PcmBytes.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <bit>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    const QString playerNode = u"vantiro-player"_s;

    class PlayerTest : public test::SessionTest {
    protected:
        [[nodiscard]] std::unique_ptr<TakePlayer> open(const QString& path, const QString& output = {})
        {
            auto opened = TakePlayer::open(path, *m_audio, output);
            EXPECT_TRUE(opened) << qPrintable(errorText(opened.error()));
            return opened ? *std::move(opened) : nullptr;
        }
        [[nodiscard]] static bool playsTo(const TakePlayer& player, const QString& sink)
        {
            const std::uint64_t cycles = player.cycles();
            return test::waitFor([&] { return targets(playerNode) == QStringList{sink} && player.cycles() > cycles; });
        }
        /// Ten seconds of the ramp in so many channels.
        [[nodiscard]] QString take(int channels) const
        {
            const PcmLayout layout{.sample = PcmLayout::Sample::float32,
                .order = std::endian::little,
                .sampleRate = double{rate},
                .channels = channels};
            QByteArray audio;
            for (std::int64_t frame = 0; frame < 10 * rate; ++frame) {
                for (int channel = 0; channel < channels; ++channel) {
                    audio += test::little(std::bit_cast<std::uint32_t>(RampSignal::value(channel, frame)));
                }
            }
            const QString path = m_sandbox.path(u"take.wav"_s);
            test::Sandbox::writeFile(path, test::wavFile(layout, audio, test::WavKind::extensible));
            return path;
        }
        /// A second of what the speakers "two" play.
        [[nodiscard]] test::SoundFile heard() const
        {
            const QString path = m_sandbox.path(u"heard.wav"_s);
            QFile::remove(path);
            {
                test::Service recorder(u"pw-record"_s,
                    {u"--target"_s, u"two"_s, u"-P"_s, u"{ stream.capture.sink = true }"_s, u"--format"_s, u"s24"_s,
                        u"--channels"_s, u"2"_s, path},
                    m_sandbox.path(u"heard.log"_s));
                EXPECT_TRUE(test::waitFor([&] { return QFile(path).size() > rate * 6; }));
            }
            return test::SoundFile::read(path);
        }

        static constexpr std::int64_t rate = 48'000;
        std::unique_ptr<PipeWireAudio> m_audio;

        void SetUp() override
        {
            test::SessionTest::SetUp();
            m_audio = std::make_unique<PipeWireAudio>();
        }
    };

    /// As after a player of music, or this one, was led elsewhere by a mixer.
    class RememberedPlayerTest : public PlayerTest {
    protected:
        void SetUp() override
        {
            test::Sandbox::writeFile(m_sandbox.home() + u"/.local/state/wireplumber/restore-stream"_s,
                "[restore-stream]\n"
                "Output/Audio:media.role:Music:target=eight\nOutput/Audio:media.role:Music:mute=true\n"
                "Output/Audio:application.name:Vantiro:target=eight\n");
            PlayerTest::SetUp();
        }
    };

}  // namespace

TEST_F(PlayerTest, IsHeardAtTheDefaultOutputOrTheChosenOneAndElsewhereOnceThatIsGone)
{
    const QString path = rampFile(SF_FORMAT_PCM_24);
    const auto player = open(path);
    ASSERT_TRUE(player);
    player->play();
    EXPECT_TRUE(playsTo(*player, u"two"_s));
    player->reconnect(u"eight"_s);
    EXPECT_TRUE(playsTo(*player, u"eight"_s));
    output(u"pw-cli"_s, {u"destroy"_s, QString::number(nodeId(u"eight"_s))});
    EXPECT_TRUE(playsTo(*player, u"two"_s));
    EXPECT_TRUE(player->isConnected());
    EXPECT_FALSE(player->hasEnded());
    player->reconnect(u"nowhere"_s);
    EXPECT_TRUE(playsTo(*player, u"two"_s));
}

TEST_F(RememberedPlayerTest, IsHeardWhereItIsSentWhateverTheSessionManagerRemembers)
{
    const auto player = open(rampFile(SF_FORMAT_PCM_24), u"two"_s);
    ASSERT_TRUE(player);
    player->play();
    ASSERT_TRUE(playsTo(*player, u"two"_s));
    EXPECT_TRUE(std::ranges::any_of(heard().numbers, [](int number) { return number != 0; })) << "it is mute";
}

TEST_F(PlayerTest, OneChannelIsHeardOnBothSidesAndTheFirstPairOfMany)
{
    for (const int channels : {1, 2, 4}) {
        const auto player = open(take(channels));
        ASSERT_TRUE(player);
        player->play();
        ASSERT_TRUE(playsTo(*player, u"two"_s));
        const test::SoundFile file = heard();
        std::array<std::vector<std::int32_t>, 2> sides;
        for (std::size_t index = file.numbers.size() / 2; index < file.numbers.size(); ++index) {
            sides[index % 2].push_back(file.numbers[index]);
        }
        const auto left = RampSignal::check(sides[0], 0);
        ASSERT_TRUE(left) << channels;
        EXPECT_LT(left->start, 10 * rate) << channels;
        EXPECT_EQ(RampSignal::check(sides[1], channels == 1 ? 0 : 1), left) << channels;
    }
}

}  // namespace vantiro
