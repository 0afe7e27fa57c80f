// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/model/ModelTest.h"

#include <functional>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::Literals::StringLiterals;

    class TakeFlowTest : public test::ModelTest {
    protected:
        /// A launched application with a source that is ready.
        void makeReady()
        {
            m_source = addInterface(u"mixer"_s, 0.4F);
            launchAndListen();
            ASSERT_EQ(m_model->selected(), mixer);
        }
        void press()
        {
            m_flows->takes().toggleTake();
            m_scheduler.settle();
        }
        [[nodiscard]] RecorderState runningTake(const QString& path) const
        {
            RecorderState take = test::takeState(path, u"mixer"_s, u"Mixer"_s);
            take.startedAt = m_scheduler.wallClock();
            return take;
        }
        /// Lets the poll see that take, and then that it has gone.
        void runAndEnd(const RecorderState& take)
        {
            m_recorder.running = take;
            m_scheduler.advance(1s);
            m_recorder.running.reset();
            m_scheduler.advance(1s);
        }

        std::shared_ptr<test::FakeSource> m_source;
    };

}  // namespace

TEST_F(TakeFlowTest, RecordsWhatTheModelSaysAndStopsIt)
{
    makeReady();
    m_model->setTakesFolder(m_sandbox.path(u"new/takes"_s));
    m_model->setFormat(TakeFormat::wav);
    m_model->setShowsTakes(true);
    m_flows->takes().toggleTake();
    EXPECT_EQ(m_model->deckState().kind, DeckState::Kind::starting);
    EXPECT_FALSE(m_model->showsTakes());
    m_scheduler.settle();
    EXPECT_EQ(m_model->deckState().kind, DeckState::Kind::recording);
    ASSERT_EQ(m_recorder.requests.size(), 1U);
    const RecorderClient::Request& request = m_recorder.requests.front();
    EXPECT_EQ(request.source, mixer);
    EXPECT_EQ(request.channels, std::nullopt);
    EXPECT_EQ(request.format, TakeFormat::wav);
    EXPECT_EQ(QFileInfo(*request.output).path(), m_model->takesFolder());
    EXPECT_TRUE(request.output->endsWith(u".wav"_s));
    EXPECT_TRUE(QFileInfo(m_model->takesFolder()).isDir());
    EXPECT_EQ(SourceMemory::load(VantiroPaths::sourcesFile()).lastRate(mixer), 44'100) << "the rate of the take";

    m_recorder.last = m_recorder.running;
    press();
    EXPECT_EQ(m_recorder.stops, 1);
    EXPECT_FALSE(m_model->recorder());
    EXPECT_EQ(error(), QString());
}

TEST_F(TakeFlowTest, StartsOneTakeHoweverOftenRecordIsPressed)
{
    makeReady();
    m_flows->takes().startTake();
    m_flows->takes().toggleTake();
    m_flows->takes().startTake();
    m_scheduler.settle();
    m_flows->takes().startTake();
    m_scheduler.settle();
    EXPECT_EQ(m_recorder.requests.size(), 1U);
}

TEST_F(TakeFlowTest, RemembersAPressForTenSecondsWhileNoSourceIsKnown)
{
    struct Case {
        const char* name;
        std::chrono::milliseconds listening;
        bool hasSource;
        std::size_t starts;
    };
    const Case cases[] = {
        {"soon", 9'900ms, true, 1},
        {"too late", 10s, true, 0},
        {"nothing found", 2s, false, 0},
    };
    for (const Case& test : cases) {
        m_recorder = {};
        m_audio.remove(u"mixer"_s);
        if (test.hasSource) {
            addInterface(u"mixer"_s, 0.4F);
        }
        launch();
        m_flows->takes().toggleTake();
        EXPECT_EQ(m_model->deckState().kind, DeckState::Kind::noSource) << test.name;
        m_scheduler.runBackground();
        m_scheduler.runBackground();
        EXPECT_TRUE(m_model->detecting()) << test.name;
        m_scheduler.advance(test.listening);
        m_scheduler.settle();
        EXPECT_EQ(m_recorder.requests.size(), test.starts) << test.name;
        EXPECT_EQ(m_model->recorder().has_value(), test.starts == 1) << test.name;
        EXPECT_EQ(m_model->recordPressedAt(), std::nullopt) << test.name;
        EXPECT_EQ(error(), QString()) << test.name;
    }
    // A later press counts anew.
    addInterface(u"mixer"_s, 0.4F);
    launch();
    m_flows->takes().toggleTake();
    m_scheduler.advance(9s);
    m_flows->takes().toggleTake();
    m_scheduler.advance(9s);
    m_scheduler.settle();
    EXPECT_EQ(m_recorder.requests.size(), 1U);
}

TEST_F(TakeFlowTest, SaysWhatStandsInTheWay)
{
    struct Case {
        std::function<void()> arrange;
        const char16_t* words;
    };
    const Case cases[] = {
        {[&] {
             m_model->setAutoPick(false);
             m_model->setSelected(std::nullopt);
         },
            u"There is nothing to record from yet. Choose a source, or press SETUP at the top of the window."},
        {[&] { m_audio.remove(u"mixer"_s); },
            u"Name of mixer is not connected. Check the cable, or pick another source."},
        {[&] {
             m_model->setLastKnownName(u"Mixxx"_s);
             m_model->setSelected(SourceRef::app(u"mixxx"_s));
         },
            u"Mixxx is not connected. Check the cable, or pick another source."},
        {[&] { m_permission->answer = AudioPermission::Answer::denied; },
            u"Microphone access is off. macOS treats every audio input as a microphone. Allow Vantiro in System "
            u"Settings, Privacy and Security, Microphone. If the meter stays empty after that, quit and reopen "
            u"Vantiro."},
        {[&] {
             m_model->setTakesFolder(u"/Volumes/No such disk"_s);
             m_scheduler.settle();
         },
            u"No such disk is not connected. The takes folder is on No such disk. Connect it, or choose another "
            u"folder in Settings."},
    };
    for (const Case& test : cases) {
        m_audio.remove(u"mixer"_s);
        m_permission->answer = AudioPermission::Answer::allowed;
        QFile::remove(VantiroPaths::settingsFile());
        makeReady();
        test.arrange();
        press();
        EXPECT_EQ(error(), test.words);
        EXPECT_TRUE(m_recorder.requests.empty()) << qPrintable(error());
        EXPECT_FALSE(m_model->starting());
        m_model->flush();
    }
}

TEST_F(TakeFlowTest, LetsTheDecisionAboutSoundAndSpaceToTheUser)
{
    makeReady();
    m_model->setFindings({{.check = PreflightFinding::Check::level,
        .severity = PreflightFinding::Severity::blocker,
        .title = u"Clipping"_s}});
    press();
    EXPECT_EQ(m_recorder.requests.size(), 1U);
}

TEST_F(TakeFlowTest, SaysWhyATakeDidNotStart)
{
    m_sandbox.setVariable("VANTIRO_TRACE", "1");
    makeReady();
    m_recorder.startFailure = CaptureError{u"the recorder did not start"_s};
    press();
    EXPECT_EQ(error(),
        u"The take did not start. Check that Name of mixer is connected and playing, then press Record again. Details "
        u"are in recorder.log in Vantiro's support folder.");
    EXPECT_TRUE(trace().contains(u"take: did not start, the recorder did not start"_s));
    EXPECT_EQ(m_model->deckState().kind, DeckState::Kind::ready);

    const QString file = m_sandbox.path(u"file"_s);
    test::Sandbox::writeFile(file, "no folder");
    m_model->setTakesFolder(file + u"/takes"_s);
    press();
    EXPECT_EQ(error(),
        QString(u"Vantiro cannot write to "_s) + file
            + u"/takes. Connect the drive, or choose another takes folder in Settings."_s);
    EXPECT_EQ(m_recorder.requests.size(), 1U);
}

TEST_F(TakeFlowTest, SaysThatATakeIsStillBeingSaved)
{
    makeReady();
    press();
    m_recorder.stopFailure = CaptureError{u"the recorder (pid 1) is still finalizing"_s};
    press();
    EXPECT_EQ(error(), u"The take is still being saved. Wait a few seconds: it appears in your takes when it is done.");
    EXPECT_TRUE(m_model->recorder());
}

TEST_F(TakeFlowTest, TellsHowATakeEnded)
{
    struct Case {
        const char* cause;
        bool lostAudio;
        int gaps;
        const char16_t* words;
    };
    constexpr auto notWritten =
        u"Part of this take did not reach the disk, so the file is shorter than your mix. Check the disk that holds "
        u"the takes folder.";
    const Case cases[] = {
        {nullptr, false, 0, u""},
        {"out-of-words", false, 0, u""},
        {nullptr, false, 2, u"The take has 2 gaps, for example where the Mac slept. The rest of the file is intact."},
        {"device-lost", false, 2,
            u"Mixer was disconnected. The take ends where the device left, and the file is intact."},
        {"source-quit", false, 0, u"Mixer quit, so the take ends there. The file is intact."},
        {"rate-changed", false, 0,
            u"The sample rate of Mixer changed, so Vantiro ended the take there. The file plays at the right speed. "
            u"Start a new take to keep recording."},
        {"input-stalled", false, 0,
            u"Mixer stopped sending audio, so Vantiro ended the take where the audio stopped. Check the cable or the "
            u"DJ app, then start a new take."},
        {"disk-full", false, 0,
            u"The disk ran out of space. Vantiro closed the take while it was still whole. Free some space, or choose "
            u"another takes folder in Settings."},
        {"wav-limit", false, 0,
            u"The WAV take reached its 4 GB limit, so Vantiro closed it while it was still whole. CAF, the default "
            u"format, has no limit."},
        {"wav-limit", true, 3, notWritten},
        {nullptr, true, 0, notWritten},
    };
    makeReady();
    for (const Case& test : cases) {
        m_model->setError(std::nullopt);
        const RecorderState take = runningTake(u"/takes/a.caf"_s);
        m_recorder.last = take;
        m_recorder.last->endedBecause = test.cause ? std::optional(QString::fromLatin1(test.cause)) : std::nullopt;
        m_recorder.last->stats = CaptureStats{.discontinuities = test.gaps, .writeErrors = test.lostAudio ? 1 : 0};
        runAndEnd(take);
        EXPECT_EQ(error(), test.words);
    }
    constexpr auto killed = u"The recorder stopped unexpectedly. The take up to that moment is in your takes folder.";
    m_recorder.last = runningTake(u"/takes/an older one.caf"_s);
    runAndEnd(runningTake(u"/takes/a.caf"_s));
    EXPECT_EQ(error(), killed);
    m_model->setError(std::nullopt);
    m_recorder.last.reset();
    runAndEnd(runningTake(u"/takes/a.caf"_s));
    EXPECT_EQ(error(), killed);
}

TEST_F(TakeFlowTest, HandsAnEndedTakeOnOnceIfItsFileIsThere)
{
    launch();
    QStringList handedOn;
    m_flows->takes().setAfterTake([&](const RecorderState& take) { handedOn << take.path; });
    const QString file = m_sandbox.path(u"a.caf"_s);
    test::Sandbox::writeFile(file, "audio");
    runAndEnd(runningTake(file));
    m_scheduler.advance(10s);
    EXPECT_EQ(handedOn, QStringList{file});

    runAndEnd(runningTake(m_sandbox.path(u"removed.caf"_s)));
    EXPECT_EQ(handedOn, QStringList{file});
}

TEST_F(TakeFlowTest, AdoptsATakeAtLaunchAndSaysNothingOfOneThatNobodySaw)
{
    addInterface(u"mixer"_s);
    m_recorder.running = runningTake(u"/takes/a.caf"_s);
    launch();
    EXPECT_EQ(
        m_model->deckState(), (DeckState{.kind = DeckState::Kind::recording, .since = m_recorder.running->startedAt}));
    press();
    EXPECT_EQ(m_recorder.stops, 1);
    EXPECT_TRUE(error().startsWith(u"The recorder stopped unexpectedly."_s));

    // The window was closed while a take ran, which ended on its own.
    m_recorder.last = runningTake(u"/takes/b.caf"_s);
    m_recorder.last->endedBecause = u"disk-full"_s;
    launch();
    m_scheduler.advance(10s);
    EXPECT_EQ(error(), QString());
}

TEST_F(TakeFlowTest, ShowsTheTimeOfTheTake)
{
    launch();
    EXPECT_EQ(m_model->menuBarElapsed(), QString());
    m_recorder.running = runningTake(u"/takes/a.caf"_s);
    const auto texts = test::countSignals(*m_model, &AppModel::menuBarElapsedChanged);
    m_scheduler.advance(500ms);
    EXPECT_EQ(m_model->menuBarElapsed(), u"0:00:00");
    m_scheduler.advance(9'500ms);
    EXPECT_EQ(m_model->menuBarElapsed(), u"0:00:10");
    EXPECT_EQ(*texts, 11) << "not twice a second";
    struct Case {
        std::chrono::seconds ago;
        const char16_t* text;
    };
    for (const Case& test : {Case{-1h, u"0:00:00"}, Case{3599s, u"0:59:59"}, Case{10h + 62s, u"10:01:02"}}) {
        m_recorder.running->startedAt = m_scheduler.wallClock().addSecs(-test.ago.count());
        m_recorder.running->pid += 1;
        m_flows->takes().pollRecorder();
        EXPECT_EQ(m_model->menuBarElapsed(), test.text);
    }
    m_recorder.running.reset();
    m_flows->takes().pollRecorder();
    EXPECT_EQ(m_model->menuBarElapsed(), QString());
}

}  // namespace vantiro
