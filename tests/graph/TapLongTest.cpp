// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakeRecorder.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "tests/graph/TapTest.h"

#include <QFileInfo>

#include <chrono>
#include <csignal>
#include <thread>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    using LongStartTest = test::TapTest;

}  // namespace

TEST_F(LongStartTest, AThousandStartsOnMissingSourcesRecordNothingElse)
{
    const auto card = device();
    ASSERT_NE(card, nullptr);
    const auto app = program(u"deck"_s);
    link(u"deck"_s, u"speakers"_s);
    const Platform platform{.audio = std::make_unique<PipeWireAudio>(), .power = nullptr};
    ASSERT_TRUE(
        test::waitFor([&] { return platform.audio->device(u"card"_s) && platform.audio->processes().size() == 1; }));
    for (int round = 0; round < 1000; ++round) {
        const bool isApp = round % 2 == 0;
        const auto recorder =
            TakeRecorder::start({.source = isApp ? SourceRef::app(u"org.test.Gone"_s) : SourceRef::device(u"gone"_s),
                                    .channels = {},
                                    .output = takePath(),
                                    .stopRequested = {}},
                platform, posixTakeStorage());
        ASSERT_FALSE(recorder);
        ASSERT_EQ(
            errorText(recorder.error()), isApp ? u"org.test.Gone is not running"_s : u"device not connected: gone"_s);
        ASSERT_EQ(filesIn(QFileInfo(takePath()).path()), QStringList());
    }
    expectIdle();
}

TEST_F(LongStartTest, AProgramThatGoesWhileItsTakeBeginsIsNeverReplaced)
{
    // Somebody else who plays a steady value, which no program under test ever does.
    const auto other = program(u"other"_s, u"org.test.Other"_s, 2, 4711);
    link(u"other-steady"_s, u"speakers"_s);
    int takes = 0;
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const QString path = m_sandbox.path(u"takes/%1.caf"_s.arg(round));
        const auto app = program(u"deck"_s);
        link(u"deck"_s, u"speakers"_s);
        const auto tool = launch({u"record"_s, u"--detached"_s, u"--app"_s, u"org.test.Deck"_s, u"--out"_s, path});
        std::this_thread::sleep_for(std::chrono::milliseconds(3 * round));
        app->signal(SIGKILL);
        const auto result = tool->wait();
        if (result.status != 0) {
            EXPECT_EQ(result.status, 1);
            EXPECT_FALSE(QFileInfo::exists(path)) << qPrintable(result.errors);
            continue;
        }
        ++takes;
        EXPECT_EQ(lastTake().endedBecause, u"source-quit"_s);
        const test::SoundFile file = test::SoundFile::read(path);
        for (int channel = 0; channel < file.channels; ++channel) {
            heardIn(file, channel, channel);
        }
    }
    EXPECT_GT(takes, 0);
    EXPECT_LT(takes, 40);
    expectIdle();
}

}  // namespace vantiro
