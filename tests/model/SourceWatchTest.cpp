// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/ProcessTap.h"
#include "tests/model/ModelTest.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::Literals::StringLiterals;

    using Reason = SourceWatch::Reason;

    SourceRef device(const QString& uid)
    {
        return SourceRef::device(uid);
    }

    class SourceWatchTest : public test::ModelTest {
    protected:
        [[nodiscard]] SourceWatch& watch() { return m_flows->sources(); }
        [[nodiscard]] bool lists(const QString& uid) const
        {
            return std::ranges::any_of(
                m_model->sources(), [&](const RankedSource& source) { return source.observation.ref == device(uid); });
        }
        void detect(Reason reason)
        {
            watch().detect(reason);
            m_scheduler.settle();
        }
        void take(const QString& uid)
        {
            m_recorder.running = test::takeState(u"/takes/a.caf"_s, uid, u"Name in the take"_s);
            m_flows->takes().pollRecorder();
        }
        void endTake()
        {
            m_recorder.running.reset();
            m_flows->takes().pollRecorder();
            m_scheduler.settle();
        }
    };

}  // namespace

TEST_F(SourceWatchTest, PicksBySituation)
{
    // "loud" is what carries the mix, "quiet" could be recorded as well, and "gone" is not connected.
    struct Case {
        const char* name;
        const char* selected;
        bool isManual;
        Reason reason;
        bool autoPick;
        const char* remembered;
        const char* expected;
        bool expectedManual;
    };
    constexpr auto asked = Reason::asked;
    constexpr auto changed = Reason::hardwareChanged;
    const Case cases[] = {
        {"nothing selected", "", false, asked, true, "", "loud", false},
        {"the better one wins", "quiet", false, changed, true, "", "loud", false},
        {"the remembered one wins", "loud", false, changed, true, "quiet", "quiet", true},
        {"the remembered one wins over a choice", "loud", true, asked, true, "quiet", "quiet", true},
        {"the remembered one wins without picking", "", false, asked, false, "quiet", "quiet", true},
        {"a remembered one that is gone says nothing", "", false, asked, true, "gone", "loud", false},
        {"chosen and connected", "quiet", true, asked, true, "", "quiet", true},
        {"chosen and connected, new hardware", "quiet", true, changed, true, "", "quiet", true},
        {"chosen, may come back", "gone", true, changed, true, "", "gone", true},
        {"picked, may come back", "gone", false, changed, true, "", "gone", false},
        {"chosen and gone, asked", "gone", true, asked, true, "", "loud", false},
        {"no picking", "", false, asked, false, "", "", false},
        {"no picking, gone", "gone", true, asked, false, "", "gone", true},
    };
    addInterface(u"loud"_s, 0.5F);
    addInterface(u"quiet"_s);
    launchAndListen();
    const auto ref = [](const char* uid) {
        return *uid == '\0' ? std::nullopt : std::optional(device(QString::fromLatin1(uid)));
    };
    for (const Case& test : cases) {
        m_model->setSelected(ref(test.selected));
        m_model->setSelectionIsManual(test.isManual);
        m_model->setAutoPick(test.autoPick);
        m_model->memory().forgetChoices();
        if (const auto remembered = ref(test.remembered)) {
            m_model->memory().remember(*remembered, {u"loud"_s, u"quiet"_s});
        }
        detect(test.reason);
        EXPECT_EQ(m_model->selected(), ref(test.expected)) << test.name;
        EXPECT_EQ(m_model->selectionIsManual(), test.expectedManual) << test.name;
        EXPECT_FALSE(m_model->detecting()) << test.name;
    }
}

TEST_F(SourceWatchTest, ClearsTheSelectionWhereNothingMayBePicked)
{
    m_audio.add({.uid = u"mic"_s, .name = u"Room microphone"_s, .transport = u"usb"_s}, {1})->sampleAtStart = 0.5F;
    launchAndListen();
    m_model->setSelected(device(u"gone"_s));
    detect(Reason::asked);
    EXPECT_EQ(m_model->selected(), std::nullopt);
    EXPECT_EQ(m_model->sourceName(), u"No source");
    EXPECT_EQ(m_model->findings(), Preflight::noSource({u"Room microphone"_s}));
}

TEST_F(SourceWatchTest, OpensNothingBeforeAccessIsDecidedAndAsksOnce)
{
    const auto source = addInterface(u"loud"_s, 0.5F);
    launch();
    addInterface(u"quiet"_s);
    m_scheduler.settle();
    EXPECT_EQ(source->timesOpened, 0);
    EXPECT_EQ(m_model->devices().size(), 2U);
    EXPECT_EQ(m_permission->requests, 0);

    watch().detect(Reason::asked);
    watch().ensureListening();
    m_scheduler.settle();
    watch().ensureListening();
    m_scheduler.settle();
    EXPECT_EQ(m_permission->requests, 1);
    EXPECT_EQ(source->timesOpened, 1);

    m_model->setDidSetup(true);
    m_model->flush();
    launch();
    EXPECT_EQ(m_permission->requests, 2) << "from the start, once the guide has been passed";
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
}

TEST_F(SourceWatchTest, ListsButNeverOpensWhatWouldChangeItsSound)
{
    for (const QString& transport : {u"bluetooth"_s, u"continuity"_s, u"airplay"_s}) {
        m_audio.add({.uid = transport, .name = transport, .transport = transport}, {2});
    }
    const QString tap = ProcessTap::aggregateUIDPrefix + u"1"_s;
    addInterface(tap, 0.5F);
    addInterface(u"broken"_s, 0.5F)->openStatus = 5;
    launchAndListen();
    for (const QString& transport : {u"bluetooth"_s, u"continuity"_s, u"airplay"_s}) {
        EXPECT_TRUE(lists(transport)) << qPrintable(transport);
        EXPECT_EQ(m_audio.source(transport)->timesOpened, 0) << qPrintable(transport);
    }
    EXPECT_FALSE(lists(tap));
    EXPECT_EQ(m_audio.source(tap)->timesOpened, 0);
    EXPECT_EQ(m_model->devices().size(), 4U);
    EXPECT_TRUE(lists(u"broken"_s));
    EXPECT_EQ(m_model->selected(), device(u"broken"_s)) << "a silent interface is still the best there is";
}

TEST_F(SourceWatchTest, ListensOnceMoreForAllChangesThatCameMeanwhile)
{
    const auto source = addInterface(u"loud"_s, 0.5F);
    launchAndListen();
    EXPECT_EQ(source->timesOpened, 1);

    watch().detect(Reason::asked);
    watch().detect(Reason::asked);
    addInterface(u"a"_s);
    addInterface(u"b"_s);
    m_audio.remove(u"a"_s);
    m_scheduler.settle();
    EXPECT_EQ(source->timesOpened, 3);
    EXPECT_TRUE(lists(u"b"_s));

    // A program that comes or begins to play calls for a round; one that pauses, and a new rate, do not.
    const auto change = [&](bool isPlaying, double rate) {
        m_audio.programs = {{.pid = 7, .bundleID = u"mixxx"_s, .name = u"Mixxx"_s, .isPlaying = isPlaying}};
        source->setRate(rate);
        m_audio.tellWatches();
        m_scheduler.settle();
        return source->timesOpened.load();
    };
    EXPECT_EQ(change(false, 48'000), 4);
    EXPECT_EQ(m_model->sources().size(), 3U);
    EXPECT_EQ(change(false, 44'100), 4);
    EXPECT_EQ(m_model->devices().front().sampleRate, 44'100);
    EXPECT_EQ(change(true, 44'100), 5);
    EXPECT_EQ(change(false, 44'100), 5);
    EXPECT_EQ(m_model->selected(), device(u"loud"_s)) << "what was heard before stands";
}

TEST_F(SourceWatchTest, KeepsTheSelectionAndTheNameOfADeviceThatWasUnplugged)
{
    addInterface(u"loud"_s, 0.5F);
    addInterface(u"quiet"_s);
    launchAndListen();
    ASSERT_EQ(m_model->selected(), device(u"loud"_s));
    m_audio.remove(u"loud"_s);
    m_scheduler.settle();
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
    EXPECT_EQ(m_model->sourceName(), u"Name of loud");
    EXPECT_EQ(m_model->headline().text, u"Name of loud is not connected");
    addInterface(u"loud"_s, 0.5F);
    m_scheduler.settle();
    EXPECT_EQ(m_model->findings().front().title, u"Name of loud connected");
}

TEST_F(SourceWatchTest, LeavesTheSelectionAloneWhenATakeStartsMeanwhile)
{
    addInterface(u"quiet"_s);
    launchAndListen();
    const auto source = addInterface(u"loud"_s, 0.5F);
    m_scheduler.runPosted();
    ASSERT_TRUE(m_model->detecting());
    take(u"quiet"_s);
    addInterface(u"late"_s);
    m_scheduler.settle();
    EXPECT_FALSE(m_model->detecting());
    EXPECT_TRUE(lists(u"loud"_s));
    EXPECT_EQ(m_model->selected(), device(u"quiet"_s));
    EXPECT_EQ(source->timesOpened, 1);

    endTake();
    EXPECT_EQ(source->timesOpened, 2) << "the change of the hardware is looked at after the take";
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
}

TEST_F(SourceWatchTest, AdoptsTheSourceOfARunningTakeAndOpensNothing)
{
    const auto source = addInterface(u"loud"_s, 0.5F);
    addInterface(u"quiet"_s);
    launch();
    take(u"app:mixxx"_s);
    m_model->setSelectionIsManual(true);
    watch().ensureListening();
    m_scheduler.settle();
    EXPECT_EQ(m_model->selected(), SourceRef::app(u"mixxx"_s));
    EXPECT_TRUE(m_model->selectionIsManual());
    EXPECT_EQ(m_model->sourceName(), u"Name in the take");
    EXPECT_FALSE(m_model->findings().empty());
    m_audio.remove(u"quiet"_s);
    m_scheduler.settle();
    EXPECT_EQ(source->timesOpened, 0);

    endTake();
    EXPECT_EQ(source->timesOpened, 1) << "the listening that was left out is made up for";
    EXPECT_EQ(m_model->selected(), SourceRef::app(u"mixxx"_s));
    EXPECT_EQ(m_model->sourceName(), u"Name in the take");
}

TEST_F(SourceWatchTest, RemembersAChoiceForTheHardware)
{
    addInterface(u"loud"_s, 0.5F);
    addInterface(u"quiet"_s);
    launchAndListen();
    watch().choose(device(u"quiet"_s));
    EXPECT_EQ(m_model->findings().front().title, u"Name of quiet connected");
    launchAndListen();
    EXPECT_EQ(m_model->selected(), device(u"quiet"_s));
    EXPECT_TRUE(m_model->selectionIsManual());

    watch().forgetChoices();
    m_scheduler.settle();
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
    EXPECT_FALSE(m_model->selectionIsManual());
    launchAndListen();
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
}

TEST_F(SourceWatchTest, RespectsWhatTheUserDecidesWhileItListens)
{
    addInterface(u"loud"_s, 0.5F);
    addInterface(u"quiet"_s);
    launchAndListen();
    watch().choose(device(u"loud"_s));
    watch().detect(Reason::asked);
    watch().choose(device(u"quiet"_s));
    m_scheduler.settle();
    EXPECT_EQ(m_model->selected(), device(u"quiet"_s));

    watch().detect(Reason::asked);
    watch().forgetChoices();
    m_scheduler.settle();
    EXPECT_EQ(m_model->selected(), device(u"loud"_s));
    EXPECT_FALSE(m_model->selectionIsManual());
}

TEST_F(SourceWatchTest, TellsThatTheMicrophoneIsBlockedButNotForAProgram)
{
    m_sandbox.setVariable("VANTIRO_TRACE", "1");
    addInterface(u"loud"_s);
    m_audio.programs = {{.pid = 7, .bundleID = u"mixxx"_s, .name = u"Mixxx"_s}};
    m_permission->answer = AudioPermission::Answer::denied;
    launchAndListen();
    EXPECT_FALSE(m_model->microphoneAllowed());
    EXPECT_EQ(m_model->findings(), std::vector{Preflight::microphoneDenied()});
    EXPECT_TRUE(trace().contains(u"microphone: blocked"_s));

    watch().choose(SourceRef::app(u"mixxx"_s));
    EXPECT_EQ(m_model->findings().front().title, u"Mixxx connected");
    watch().choose(device(u"loud"_s));
    EXPECT_EQ(m_model->findings(), std::vector{Preflight::microphoneDenied()});

    m_permission->answer = AudioPermission::Answer::notDetermined;
    m_flows->becomeActive();
    EXPECT_TRUE(m_model->microphoneAllowed());
    EXPECT_EQ(m_model->findings().front().title, u"Name of loud connected");
}

TEST_F(SourceWatchTest, WarnsOfAnotherRateOnlyIfAnotherProgramHoldsTheDeviceToIt)
{
    const auto source = addInterface(u"loud"_s, 0.5F);
    launchAndListen();
    const auto rateTitle = [this] { return m_model->findings().at(2).title; };
    watch().rememberRate(device(u"loud"_s), 44'100);
    watch().choose(device(u"loud"_s));
    EXPECT_EQ(rateTitle(), u"Sample rate 48,000 Hz");
    source->isHeldByOthers = true;
    watch().choose(device(u"loud"_s));
    EXPECT_EQ(rateTitle(), u"Sample rate changed: 44,100 to 48,000 Hz");
}

TEST_F(SourceWatchTest, LooksAtTheDiskOfTheTakesFolderInTheBackground)
{
    addInterface(u"loud"_s, 0.5F);
    launchAndListen();
    ASSERT_EQ(m_model->findings().size(), 4U);
    EXPECT_EQ(m_model->findings().back().check, PreflightFinding::Check::disk);
    m_model->setTakesFolder(u"/Volumes/No such disk/Takes"_s);
    EXPECT_EQ(m_model->findings().size(), 3U) << "what was known of the other disk is void";
    m_model->setTakesFolder(u"/Volumes/Nor such a disk/Takes"_s);
    m_scheduler.settle();
    ASSERT_EQ(m_model->findings().size(), 4U);
    EXPECT_EQ(m_model->findings().back().title, u"Nor such a disk is not connected");
}

}  // namespace vantiro
