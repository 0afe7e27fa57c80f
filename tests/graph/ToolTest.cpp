// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/PipeWireAudio.h"
#include "tests/graph/GraphTest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <atomic>
#include <thread>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    RecorderState stateIn(const QString& output)
    {
        const auto state = RecorderState::fromJson(QJsonDocument::fromJson(output.toUtf8()).object());
        EXPECT_TRUE(state) << qPrintable(output);
        return state.value_or(RecorderState{});
    }

    class ToolTest : public test::GraphTest { };
    class GraphMirrorTest : public test::GraphTest { };

}  // namespace

TEST_F(ToolTest, HelpsWhoeverAsks)
{
    for (const QStringList& words : {QStringList(), QStringList{u"--help"_s}, QStringList{u"help"_s},
             QStringList{u"record"_s, u"--help"_s}, QStringList{u"--version"_s}}) {
        const auto result = run(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(result.output.startsWith(u"vantiro "_s)) << qPrintable(result.output);
        EXPECT_EQ(result.errors, QString());
    }
}

TEST_F(ToolTest, WithoutATakeThereIsNothingToShowOrStop)
{
    for (const QString& command : {u"status"_s, u"stop"_s}) {
        for (const QStringList& words : {QStringList{command}, QStringList{command, u"--json"_s}}) {
            const auto result = run(words);
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.errors, u"vantiro: No take is running.\n"_s);
            EXPECT_EQ(result.output, QString());
        }
    }
}

TEST_F(ToolTest, ShowsAndStopsTheRunningTake)
{
    const auto card = device({.description = u"Mixer"_s});
    for (const bool asJson : {false, true}) {
        const QStringList manner = asJson ? QStringList{u"--json"_s} : QStringList();
        const auto tool = record(takePath(), manner);
        ASSERT_TRUE(plays(*card, 0.8));
        const auto status = run(QStringList{u"status"_s} + manner);
        const auto stop = run(QStringList{u"stop"_s} + manner);
        EXPECT_FALSE(tool->isRunning()) << "stop came back before the take was closed";
        const auto recorder = tool->wait();
        const RecorderState last = lastTake();
        for (const auto& result : {status, stop, recorder}) {
            EXPECT_EQ(result.status, 0);
            EXPECT_TRUE(result.output.contains(takePath()));
            EXPECT_TRUE(result.output.contains(u"Mixer"_s));
        }
        if (asJson) {
            EXPECT_EQ(stateIn(recorder.output), last);
            EXPECT_EQ(stateIn(stop.output), last);
            EXPECT_EQ(stateIn(status.output).pid, last.pid);
            EXPECT_LE(stateIn(status.output).stats->frames, last.stats->frames);
        } else {
            EXPECT_TRUE(stop.output.contains(u"every frame is in the file"_s)) << qPrintable(stop.output);
        }
    }
}

TEST_F(ToolTest, ListsWhatCanBeRecorded)
{
    EXPECT_TRUE(run({u"sources"_s}).output.startsWith(u"Nothing to record from."_s));
    const auto mixer = device({.name = u"mixer"_s,
        .description = u"Club Mixer"_s,
        .channels = 8,
        .sampleRate = 96'000,
        .properties = {{u"device.bus"_s, u"usb"_s}}});
    const auto card = device();
    const auto text = run({u"sources"_s, u"--no-listen"_s});
    EXPECT_EQ(text.status, 0);
    EXPECT_TRUE(text.output.startsWith(u"▶  50  Club Mixer  stereo\n"
                                       "       usb, 8 channels at 96,000 Hz\n"
                                       "       --device mixer\n"_s))
        << qPrintable(text.output);

    const auto json = run({u"sources"_s, u"--no-listen"_s, u"--json"_s});
    EXPECT_EQ(json.status, 0);
    const QJsonArray array = QJsonDocument::fromJson(json.output.toUtf8())[u"devices"_s].toArray();
    ASSERT_EQ(array.size(), 2) << qPrintable(json.output);
    const auto first = AudioDevice::fromJson(array[0].toObject());
    ASSERT_TRUE(first);
    EXPECT_EQ(*first,
        (AudioDevice{.uid = u"mixer"_s,
            .name = u"Club Mixer"_s,
            .transport = u"usb"_s,
            .inputChannels = 8,
            .sampleRate = 96'000}));
    EXPECT_EQ(mixer->cycles() + card->cycles(), 0) << "something was opened";
}

TEST_F(ToolTest, TheDemoFindsAndRecordsTheMix)
{
    const auto demo = launch({u"demo"_s, u"--seconds"_s, u"5"_s, u"--folder"_s, m_sandbox.path(u"demo"_s)})->wait(60s);
    EXPECT_EQ(demo.status, 0) << qPrintable(demo.output + demo.errors);
    EXPECT_TRUE(demo.output.contains(u"\n▶  65  Virtual Deck "_s)) << qPrintable(demo.output);
    EXPECT_EQ(filesIn(m_sandbox.path(u"demo"_s)).size(), 2) << "the take and its copy";
    EXPECT_TRUE(demo.output.contains(QRegularExpression(u"\n  Album +Vantiro\n(.*\n)*  Cover +PNG, "_s)))
        << qPrintable(demo.output);
}

TEST_F(GraphMirrorTest, TellsOnceOfEachChangeOfTheDevices)
{
    PipeWireAudio audio;
    ASSERT_TRUE(audio.isAvailable());
    std::atomic<int> changes = 0;
    const auto watch = audio.watch([&changes] { ++changes; });
    const auto settles = [&](int expected) {
        // Once the change is told, any further one would come within the time that is gathered.
        return test::waitFor([&] { return changes == expected; })
            && (std::this_thread::sleep_for(400ms), changes == expected);
    };
    EXPECT_TRUE(settles(0));
    auto card = device({.channels = 8});
    EXPECT_TRUE(settles(1)) << changes;
    EXPECT_EQ(audio.device(u"card"_s).value_or(AudioDevice{}).inputChannels, 8);
    card->disconnect();
    EXPECT_TRUE(settles(2)) << changes;
    EXPECT_TRUE(audio.devices().empty());
}

TEST_F(GraphMirrorTest, IsRightAgainAfterAudioCameBack)
{
    PipeWireAudio audio;
    auto card = device();
    ASSERT_TRUE(test::waitFor([&] { return audio.devices().size() == 1; }));
    card.reset();
    m_graph->kill();
    ASSERT_TRUE(test::waitFor([&] { return !audio.isAvailable() && audio.devices().empty(); }));
    ASSERT_TRUE(m_graph->restart());
    card = device({.name = u"another"_s});
    EXPECT_TRUE(test::waitFor([&] { return audio.device(u"another"_s).has_value(); }));
    EXPECT_TRUE(audio.isAvailable());
}

}  // namespace vantiro
