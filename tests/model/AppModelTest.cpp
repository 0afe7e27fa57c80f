// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/model/ModelTest.h"

#include <functional>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    using AppModelTest = test::ModelTest;
    using Check = PreflightFinding::Check;
    using Severity = PreflightFinding::Severity;

    RankedSource ranked(const SourceRef& ref, const QString& name)
    {
        return {.observation = {.ref = ref, .name = name}, .score = 50};
    }

    RecorderState take(std::int64_t frames)
    {
        RecorderState state = test::takeState(u"/takes/a.caf"_s, u"mixer"_s, u"Name in the take"_s);
        state.startedAt = QDateTime({2026, 9, 19}, {21, 0}, Qt::UTC);
        state.stats = CaptureStats{.frames = frames};
        return state;
    }

}  // namespace

TEST_F(AppModelTest, TellsOnceOfEachChangeAndNeverOfTheSameValue)
{
    struct Case {
        const char* name;
        void (AppModel::*signal)();
        std::function<void(AppModel&)> change;
    };
    const Case cases[] = {
        {"sources", &AppModel::sourcesChanged, [](AppModel& model) { model.setSources({ranked(mixer, u"A"_s)}); }},
        {"selected", &AppModel::selectedChanged, [](AppModel& model) { model.setSelected(mixer); }},
        {"sourceName", &AppModel::sourceNameChanged,
            [](AppModel& model) {
                model.setSources({ranked(mixer, u"A"_s)});
                model.setSelected(mixer);
            }},
        {"deckState", &AppModel::deckStateChanged, [](AppModel& model) { model.setSelected(mixer); }},
        {"levels", &AppModel::levelsChanged, [](AppModel& model) { model.setLevels({.left = -3}); }},
        {"findings", &AppModel::findingsChanged,
            [](AppModel& model) { model.setFindings({Preflight::microphoneDenied()}); }},
        {"headline", &AppModel::headlineChanged,
            [](AppModel& model) { model.setFindings({Preflight::microphoneDenied()}); }},
        {"errorMessage", &AppModel::errorMessageChanged, [](AppModel& model) { model.setError(u"Words"_s); }},
        {"format", &AppModel::formatChanged, [](AppModel& model) { model.setFormat(TakeFormat::wav); }},
        {"takeCopy", &AppModel::takeCopyChanged, [](AppModel& model) { model.setTakeCopy(std::nullopt); }},
        {"firstChannel", &AppModel::firstChannelChanged,
            [](AppModel& model) {
                model.setSelected(mixer);
                model.setFirstChannelOfSelection(3);
            }},
    };
    for (const Case& test : cases) {
        launch();
        m_model->flush();
        QFile::remove(VantiroPaths::settingsFile());
        const auto count = test::countSignals(*m_model, test.signal);
        test.change(*m_model);
        EXPECT_EQ(*count, 1) << test.name;
        test.change(*m_model);
        EXPECT_EQ(*count, 1) << test.name << " again";
    }
}

TEST_F(AppModelTest, TellsOfARunningTakeOnlyWhenFramesCame)
{
    launch();
    const auto takes = test::countSignals(*m_model, &AppModel::recorderChanged);
    const auto decks = test::countSignals(*m_model, &AppModel::deckStateChanged);
    m_model->setRecorder(take(10));
    RecorderState louder = take(10);
    louder.stats->peak = 1;
    m_model->setRecorder(louder);
    EXPECT_EQ(*takes, 1);
    m_model->setRecorder(take(20));
    EXPECT_EQ(*takes, 2);
    EXPECT_EQ(*decks, 1) << "the deck shows since when, and that stays";
    m_model->setRecorder(std::nullopt);
    EXPECT_EQ(*takes, 3);
    EXPECT_EQ(*decks, 2);
}

TEST_F(AppModelTest, ShowsTheDeckByWhatMattersMost)
{
    launch();
    const auto kind = [this] { return m_model->deckState().kind; };
    EXPECT_EQ(kind(), DeckState::Kind::noSource);
    m_model->setSelected(mixer);
    EXPECT_EQ(kind(), DeckState::Kind::ready);
    m_model->setDetecting(true);
    EXPECT_EQ(kind(), DeckState::Kind::listening);
    m_model->setStarting(true);
    EXPECT_EQ(kind(), DeckState::Kind::starting);
    m_model->setRecorder(take(0));
    EXPECT_EQ(m_model->deckState(), (DeckState{.kind = DeckState::Kind::recording, .since = take(0).startedAt}));
}

TEST_F(AppModelTest, SumsUpTheFindingsInOneLine)
{
    struct Case {
        std::vector<PreflightFinding> findings;
        bool detecting;
        AppModel::Headline headline;
    };
    const PreflightFinding connected{.title = u"Mixer connected"_s};
    const PreflightFinding good{.check = Check::level, .title = u"Level good"_s};
    const PreflightFinding low{.check = Check::level, .severity = Severity::warning, .title = u"Low"_s};
    const PreflightFinding rate{.check = Check::sampleRate, .severity = Severity::warning, .title = u"Rate"_s};
    const PreflightFinding disk{.check = Check::disk, .severity = Severity::blocker, .title = u"Disk"_s};
    const Case cases[] = {
        {{}, true, {u"Listening for your mix…"_s}},
        {{}, false, {u"Nothing found yet"_s}},
        {{connected, good}, false, {u"Ready. Level good"_s}},
        {{connected}, true, {u"Ready. "_s}},
        {{connected, low, rate}, false, {u"Low"_s, Severity::warning}},
        {{connected, low, disk, rate}, false, {u"Disk"_s, Severity::blocker}},
    };
    for (const Case& test : cases) {
        launch();
        m_model->setDetecting(test.detecting);
        m_model->setFindings(test.findings);
        EXPECT_EQ(m_model->headline(), test.headline) << qPrintable(test.headline.text);
    }
}

TEST_F(AppModelTest, NamesTheSourceByTheBestThatIsKnown)
{
    launch();
    EXPECT_EQ(m_model->sourceName(), u"No source");
    m_model->setLastKnownName(u"Last known"_s);
    EXPECT_EQ(m_model->sourceName(), u"No source");
    m_model->setSelected(mixer);
    EXPECT_EQ(m_model->sourceName(), u"Last known");
    m_model->setDevices({{.uid = u"mixer"_s, .name = u"Name of the device"_s}});
    EXPECT_EQ(m_model->sourceName(), u"Name of the device");
    m_model->setRecorder(take(0));
    EXPECT_EQ(m_model->sourceName(), u"Name in the take");
    m_model->setSources({ranked(SourceRef::app(u"mixer"_s), u"A program"_s), ranked(mixer, u"Ranked"_s)});
    EXPECT_EQ(m_model->sourceName(), u"Ranked");
    m_model->setSelected(SourceRef::app(u"mixer"_s));
    EXPECT_EQ(m_model->sourceName(), u"A program");
}

TEST_F(AppModelTest, RecordsAPairOfChannelsOnlyIfTheDeviceHasBoth)
{
    struct Case {
        SourceRef source;
        std::int64_t inputs;
        std::int64_t first;
        std::optional<std::vector<std::int64_t>> channels;
    };
    const SourceRef program = SourceRef::app(u"mixer"_s);
    const Case cases[] = {
        {mixer, 4, 1, std::nullopt},
        {mixer, 4, 0, std::nullopt},
        {mixer, 4, 3, std::vector<std::int64_t>{3, 4}},
        {mixer, 3, 3, std::nullopt},
        {mixer, 0, 3, std::vector<std::int64_t>{3, 4}},  // Not known at present.
        {program, 2, 3, std::vector<std::int64_t>{3, 4}},
    };
    for (const Case& test : cases) {
        launch();
        if (test.inputs > 0) {
            m_model->setDevices({{.uid = u"mixer"_s, .name = u"A"_s, .inputChannels = test.inputs}});
        }
        m_model->setSelected(test.source);
        m_model->setFirstChannelOfSelection(test.first);
        EXPECT_EQ(m_model->channelsForSelection(), test.channels) << test.inputs << " inputs, " << test.first;
        m_model->setSelected(SourceRef::device(u"other"_s));
        EXPECT_EQ(m_model->firstChannelOfSelection(), 1);
    }
}

TEST_F(AppModelTest, DoesNothingInTheWorldAsASample)
{
    const auto source = addInterface(u"mixer"_s, 0.5F);
    m_recorder.running = take(0);
    test::Sandbox::writeFile(VantiroPaths::settingsFile(), R"({"didSetup": true})");
    launch(AppModel::Kind::sample);
    m_flows->sources().ensureListening();
    m_flows->sources().detect(SourceWatch::Reason::asked);
    m_flows->sources().choose(mixer);
    m_flows->sources().forgetChoices();
    m_model->setSelected(mixer);
    m_flows->meter().addUser();
    m_flows->takes().toggleTake();
    m_flows->takes().stopTake();
    m_flows->becomeActive();
    m_scheduler.advance(std::chrono::seconds(5));
    m_scheduler.settle();
    EXPECT_EQ(source->timesOpened, 0);
    EXPECT_EQ(m_permission->requests, 0);
    EXPECT_TRUE(m_recorder.requests.empty());
    EXPECT_EQ(m_recorder.stops, 0);
    EXPECT_FALSE(m_model->recorder());
    EXPECT_FALSE(m_model->selectionIsManual());
    EXPECT_FALSE(QFileInfo::exists(VantiroPaths::sourcesFile()));
}

}  // namespace vantiro
