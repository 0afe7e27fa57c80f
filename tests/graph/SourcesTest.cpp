// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/SourceMemory.h"
#include "tests/graph/TapTest.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <random>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    const QString deckId = u"org.test.Deck"_s;

    /// White noise with this peak; silence if it is 0.
    VirtualDevice::Options::Render noise(float peak)
    {
        return
            [peak, generator = std::minstd_rand()](std::span<float* const> channels, int frames, std::int64_t) mutable {
                for (float* channel : channels) {
                    for (int frame = 0; frame < frames; ++frame) {
                        channel[frame] = peak * (static_cast<float>(generator()) / 1'073'741'824.0F - 1);
                    }
                }
            };
    }

    QStringList strings(const QJsonArray& array, const QString& key)
    {
        QStringList found;
        for (const QJsonValue value : array) {
            found << (value[key].isString() ? value[key].toString() : QString::number(value[key].toInt()));
        }
        return found;
    }

    class SourcesTest : public test::TapTest {
    protected:
        [[nodiscard]] std::unique_ptr<VirtualDevice> device(
            const QString& name, float peak, const QList<std::pair<QString, QString>>& properties = {})
        {
            auto made = VirtualDevice::make(m_graph->socketPath(),
                {.name = name, .quantum = 1024, .properties = properties, .render = noise(peak)});
            EXPECT_TRUE(made) << qPrintable(errorText(made.error()));
            return made ? *std::move(made) : nullptr;
        }

        [[nodiscard]] std::unique_ptr<VirtualDevice> silentInterface()
        {
            return device(u"interface-usb"_s, 0, {{u"device.bus"_s, u"usb"_s}});
        }

        /// A program that counts as a DJ app and plays.
        [[nodiscard]] std::unique_ptr<test::Program> playingDeck()
        {
            test::Sandbox::writeFile(VantiroPaths::djAppsFile(), "[\"org.test.\"]");
            auto deck = program(u"deck"_s, deckId);
            link(u"deck"_s, u"speakers"_s);
            return deck;
        }

        static QJsonObject sources(const QStringList& options = {})
        {
            const auto result = run(QStringList{u"sources"_s, u"--json"_s} + options);
            EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
            return QJsonDocument::fromJson(result.output.toUtf8()).object();
        }
    };

}  // namespace

TEST_F(SourcesTest, AreRankedByWhatIsHeardAndTheMixIsPicked)
{
    const auto interface = silentInterface();
    const auto cable = device(u"cable"_s, 0.1F);
    const auto microphone =
        device(u"mic"_s, 0.002F, {{u"device.bus"_s, u"pci"_s}, {u"alsa.driver_name"_s, u"snd_hda_intel"_s}});
    const auto deck = playingDeck();
    const auto other = program(u"other"_s, u"com.example.player"_s);
    link(u"other"_s, u"speakers"_s);

    const QJsonObject heard = sources();
    const QJsonArray ranked = heard[u"sources"_s].toArray();
    EXPECT_EQ(strings(ranked, u"id"_s), (QStringList{deckId, u"cable"_s, u"interface-usb"_s, u"mic"_s}));
    EXPECT_EQ(strings(ranked, u"score"_s), (QStringList{u"65"_s, u"55"_s, u"50"_s, u"5"_s}));
    EXPECT_EQ(heard[u"pick"_s], u"app:"_s + deckId);
    EXPECT_EQ(heard[u"programs"_s].toArray().size(), 2);
    EXPECT_NEAR(ranked[1][u"peakDB"_s].toDouble(), -20, 0.1);
    EXPECT_EQ(ranked[2][u"peakDB"_s], -120);
    EXPECT_TRUE(ranked[3][u"isMicrophone"_s].toBool());

    const QString text = run({u"sources"_s}).output;
    EXPECT_TRUE(text.startsWith(u"▶  65  Deck deck "_s)) << qPrintable(text);
    EXPECT_GT(text.indexOf(u"--app com.example.player"_s), text.indexOf(u"no known DJ apps:"_s)) << qPrintable(text);

    const std::int64_t cycles = interface->cycles();
    const QJsonArray unheard = sources({u"--no-listen"_s})[u"sources"_s].toArray();
    EXPECT_EQ(unheard.size(), 4);
    EXPECT_EQ(unheard[0][u"id"_s], deckId);
    for (const QJsonValue source : unheard) {
        EXPECT_TRUE(source[u"peakDB"_s].isUndefined());
    }
    EXPECT_EQ(interface->cycles(), cycles) << "the interface was opened";

    SourceMemory memory;
    memory.remember(SourceRef::device(u"interface-usb"_s), {u"interface-usb"_s, u"cable"_s, u"mic"_s});
    ASSERT_TRUE(memory.save(VantiroPaths::sourcesFile()));
    EXPECT_EQ(sources()[u"pick"_s], u"interface-usb"_s);
}

TEST_F(SourcesTest, AreNotListenedToOnceSomebodyWantsToStop)
{
    const auto interface = silentInterface();
    const auto tool = launch({u"sources"_s});
    ASSERT_TRUE(test::waitFor([&] { return interface->cycles() > 0; }));
    tool->signal(SIGINT);
    const auto result = tool->wait(1s);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, u"vantiro: stopped while listening\n"_s);
    EXPECT_EQ(result.output, QString());
}

TEST_F(SourcesTest, AreCheckedBeforeATake)
{
    struct Case {
        QStringList words;
        int status;
        QString line;
    };
    const auto expect = [](const Case& wanted) {
        const auto result = run(QStringList{u"check"_s} + wanted.words);
        EXPECT_EQ(result.status, wanted.status) << qPrintable(result.errors);
        EXPECT_TRUE(result.output.contains(wanted.line + u'\n')) << qPrintable(result.output);
    };
    expect({{}, 1, u"✗ No cabled source or DJ app found"_s});
    const auto interface = silentInterface();
    expect({{}, 0, u"✓ interface-usb connected\n! No signal yet"_s});
    const auto cable = device(u"cable"_s, 0.1F);
    const auto deck = playingDeck();
    for (const Case& wanted : std::vector<Case>{
             {{u"--device"_s, u"cable"_s}, 0, u"! Low: peak -20 dB"_s},
             {{u"--device"_s, u"interface-usb"_s}, 0, u"! No signal yet"_s},
             {{u"--device"_s, u"gone"_s}, 1, u"✗ gone is not connected"_s},
             {{u"--app"_s, u"org.test.Gone"_s}, 1, u"✗ org.test.Gone is not running"_s},
             {{}, 0, u"✓ Deck deck connected\n✗ Clipping: the signal reaches 0 dB"_s},
         }) {
        expect(wanted);
    }
    const auto json = run({u"check"_s, u"--json"_s, u"--device"_s, u"gone"_s});
    EXPECT_EQ(json.status, 1);
    const QJsonObject object = QJsonDocument::fromJson(json.output.toUtf8()).object();
    EXPECT_EQ(object[u"source"_s], u"gone"_s);
    EXPECT_EQ(object[u"canRecord"_s], false);
    EXPECT_EQ(object[u"findings"_s][0][u"severity"_s], u"blocker"_s);
}

TEST_F(SourcesTest, NeedNotBeNamedToRecord)
{
    const auto nothing = run({u"record"_s});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_TRUE(nothing.errors.contains(u"connect an audio interface"_s)) << qPrintable(nothing.errors);

    const auto interface = silentInterface();
    const auto deck = playingDeck();
    const QString folder = m_sandbox.path(u"my takes"_s);
    test::Sandbox::writeFile(
        VantiroPaths::settingsFile(), QJsonDocument(QJsonObject{{u"takesFolder"_s, folder}}).toJson());
    const auto tool = launch({u"record"_s});
    ASSERT_TRUE(test::waitFor([] { return RecorderStateStore::running().has_value(); }, 20s));
    EXPECT_TRUE(run({u"record"_s}).errors.startsWith(u"vantiro: already recording: "_s + folder));
    ASSERT_TRUE(takeGrows(0.5));
    tool->signal(SIGINT);
    const auto result = tool->wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    EXPECT_TRUE(result.output.startsWith(u"Found Deck deck: playing on this computer.\nRecording Deck deck. "_s))
        << qPrintable(result.output);
    const RecorderState last = lastTake();
    EXPECT_EQ(last.deviceUID, u"app:"_s + deckId);
    EXPECT_EQ(QFileInfo(last.path).path(), folder);
    expectContinuous(last);
}

}  // namespace vantiro
