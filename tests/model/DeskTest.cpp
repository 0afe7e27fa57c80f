// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Desk.h"

#include "app/model/Figures.h"
#include "tests/model/ModelTest.h"

#include <QMetaProperty>
#include <QSet>

#include <functional>
#include <tuple>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// Hears the signals of all properties of an object.
    class Notices final : public QObject {
    public:
        explicit Notices(QObject& object) : m_object(object), m_values(values())
        {
            const QMetaObject& type = *object.metaObject();
            for (int index = 0; index < type.propertyCount(); ++index) {
                QMetaObject::connect(&object, type.property(index).notifySignalIndex(), this,
                    QObject::staticMetaObject.methodCount() + index);
            }
        }

        /// The properties that changed since the last call and told nobody.
        QStringList missing()
        {
            QStringList names;
            const QVariantList before = std::exchange(m_values, values());
            for (int index = 0; index < before.size(); ++index) {
                if (before[index] != m_values[index] && !m_told.contains(index)) {
                    names << QString::fromLatin1(m_object.metaObject()->property(index).name());
                }
            }
            m_told.clear();
            return names;
        }

        int qt_metacall(QMetaObject::Call call, int id, void** arguments) override
        {
            m_told.insert(QObject::qt_metacall(call, id, arguments));
            return -1;
        }

    private:
        [[nodiscard]] QVariantList values() const
        {
            QVariantList values;
            for (int index = 0; index < m_object.metaObject()->propertyCount(); ++index) {
                values << m_object.metaObject()->property(index).read(&m_object);
            }
            return values;
        }

        QObject& m_object;
        QVariantList m_values;
        QSet<int> m_told;
    };

    class DeskTest : public test::ModelTest {
    protected:
        enum class Guide {
            no,
            yes
        };

        void open(Guide guide = Guide::no)
        {
            m_desk.reset();
            m_departure.reset();
            m_recorder = {};
            launch();
            m_departure = std::make_unique<Departure>(*m_model, services(), [] { });
            Desk::Doors doors;
            if (guide == Guide::yes) {
                doors.guide = [this] { ++m_guides; };
            }
            m_desk = std::make_unique<Desk>(*m_model, *m_flows, *m_departure, std::move(doors));
        }
        /// A device of so many inputs is selected.
        void selectDevice(std::int64_t channels)
        {
            m_model->setDevices({{.uid = u"mixer"_s, .name = u"Mixer"_s, .inputChannels = channels}});
            m_model->setSelected(mixer);
        }
        /// The lines of the source menu: "*" is lit, "-" disabled.
        [[nodiscard]] QStringList menu() const
        {
            QStringList lines;
            for (const QVariant& entry : m_desk->sourceEntries()) {
                const QVariantMap line = entry.toMap();
                lines << line[u"text"_s].toString() + (line[u"lit"_s].toBool() ? u"*"_s : QString())
                        + (line[u"disabled"_s].toBool() ? u"-"_s : QString());
            }
            return lines;
        }

        /// As the menu does it with its line at `index`.
        void choose(qsizetype index)
        {
            m_desk->chooseSourceEntry(m_desk->sourceEntries().value(index).toMap()[u"id"_s].toString());
        }

        const RecorderState m_take = test::takeState(u"/a.caf"_s, u"mixer"_s);
        int m_guides = 0;
        std::unique_ptr<Departure> m_departure;
        std::unique_ptr<Desk> m_desk;
    };

}  // namespace

TEST_F(DeskTest, TellsOfEachPropertyThatChanges)
{
    open();
    Notices notices(*m_desk);
    const std::vector<std::pair<std::function<void()>, QString>> cases{
        {[] {}, u"Open setup, "_s},
        {[&] { m_model->setSelected(mixer); }, u"Record, Picked automatically"_s},
        {[&] { m_model->setDetecting(true); }, u"Record, Listening"_s},
        {[&] { m_model->setDetecting(false), selectDevice(4); }, u"Record, Picked automatically"_s},
        {[&] { m_model->setSelectionIsManual(true); }, u"Record, "_s},
        {[&] { m_model->setStarting(true); }, u"Record, "_s},
        {[&] { runTake(m_take), m_model->setStarting(false); }, u"Stop recording, Recording from this source"_s},
        {[&] { m_model->setConfirmStop(true), m_desk->pressDeck(); }, u"Stop recording, Recording from this source"_s},
        {[&] { runTake(std::nullopt), m_model->setTakes(std::vector<Take>(2)); }, u"Record, "_s},
        {[&] { m_model->setPlaybackLength(4000), m_model->setPlaying(Take{.path = u"/a"_s, .created = {}}); },
            u"Stop playback, "_s},
        {[&] { m_model->setPlaybackPosition(4.9), m_model->setPlaybackPaused(true); }, u"Stop playback, "_s},
        {[&] { m_model->setPlaying(std::nullopt), m_model->setPlaybackPaused(false); }, u"Record, "_s},
    };
    for (const auto& [change, words] : cases) {
        change();
        EXPECT_EQ(m_desk->keyText() + u", "_s + m_desk->sourceLine(), words);
        EXPECT_EQ(notices.missing(), QStringList()) << words.toStdString();
    }
    runTake(m_take);
    int told = 0;
    QObject::connect(m_desk.get(), &Desk::phaseChanged, m_desk.get(), [&] { ++told; });
    m_recorder.running->stats = CaptureStats{.frames = 100};
    m_flows->takes().pollRecorder();
    EXPECT_EQ(told, 0) << "a take that goes on is no news";
    EXPECT_EQ(notices.missing(), QStringList());
}

TEST_F(DeskTest, AsksBeforeTheDeckStopsATakeButNotElsewhere)
{
    open(Guide::yes);
    m_desk->pressKey();
    EXPECT_EQ(m_guides, 1);
    m_model->setConfirmStop(true);
    m_model->setSelected(mixer);
    const auto pressed = [&](auto press) {
        runTake(m_take);
        m_recorder.stops = 0;
        (m_desk.get()->*press)();
        m_scheduler.settle();
        return std::pair(m_desk->asksToStop(), m_recorder.stops);
    };
    EXPECT_EQ(pressed(&Desk::toggleTake), std::pair(false, 1));
    EXPECT_EQ(pressed(&Desk::pressDeck), std::pair(true, 0));
    EXPECT_EQ(pressed(&Desk::stopDeclined), std::pair(false, 0));
    EXPECT_EQ(pressed(&Desk::pressKey), std::pair(true, 0));
    EXPECT_EQ(pressed(&Desk::stopAssented), std::pair(false, 1));

    EXPECT_EQ(pressed(&Desk::pressKey), std::pair(true, 0));
    runTake(std::nullopt);
    EXPECT_FALSE(m_desk->asksToStop()) << "there is nothing to stop any more";
    m_desk->stopAssented();
    m_scheduler.settle();
    EXPECT_EQ(m_recorder.requests.size(), 0U) << "assent to stop started a take";
}

TEST_F(DeskTest, OffersTheSourcesInOrderAndChoosesThem)
{
    open(Guide::yes);
    EXPECT_EQ(menu(), (QStringList{u"Nothing connected yet. Press SETUP.-"_s, u"Open the setup guide"_s}));
    choose(0);
    choose(1);
    choose(2);
    EXPECT_EQ(m_guides, 1);

    addInterface(u"mixer"_s, 0.4F);
    m_audio.add(
        {.uid = u"other"_s, .name = u"Two\nlines <b>"_s, .transport = u"usb"_s, .inputTerminal = u"line"_s}, {2});
    m_desk->detectAgain();
    m_scheduler.settle();
    m_model->setIsAdvanced(true);
    EXPECT_EQ(
        menu(), (QStringList{u"Name of mixer*"_s, u"Two lines <b>"_s, u"Detect Again"_s, u"Open the setup guide"_s}));
    choose(1);
    EXPECT_EQ(m_model->selected(), SourceRef::device(u"other"_s));
    choose(2);
    EXPECT_TRUE(m_model->detecting());
    EXPECT_EQ(m_desk->detectText(), u"Listening");
    m_scheduler.settle();

    runTake(test::takeState(u"/a.caf"_s, u"other"_s));
    choose(0);
    choose(2);
    EXPECT_EQ(m_model->selected(), SourceRef::device(u"other"_s)) << "the source is fixed while a take runs";
    EXPECT_FALSE(m_model->detecting());
}

TEST_F(DeskTest, StepsThroughPairsOfChannels)
{
    // Channels, the stored first one, and the pairs: shown, above, below.
    using Case = std::tuple<int, int, QString, QString, QString>;
    const std::vector<Case> cases{
        {8, 1, u"1–2"_s, u"3–4"_s, u"1–2"_s},
        {8, 7, u"7–8"_s, u"7–8"_s, u"5–6"_s},
        {8, 2, u"2–3"_s, u"4–5"_s, u"1–2"_s},
        {8, 9, u"1–2"_s, u"3–4"_s, u"1–2"_s},
        {3, 1, u"1–2"_s, u"2–3"_s, u"1–2"_s},
    };
    open();
    for (const auto& [channels, stored, shown, above, below] : cases) {
        selectDevice(channels);
        for (const auto& [direction, after] : {std::pair(1, above), std::pair(-1, below)}) {
            m_model->setFirstChannelOfSelection(stored);
            EXPECT_EQ(m_desk->channels(), shown);
            EXPECT_EQ(direction > 0 ? m_desk->canRaiseChannels() : m_desk->canLowerChannels(), after != shown);
            m_desk->stepChannels(direction);
            EXPECT_EQ(m_desk->channels(), after);
        }
    }
    m_model->setFirstChannelOfSelection(1);
    RecorderState take = m_take;
    take.channels = {5, 6};
    runTake(take);
    EXPECT_EQ(m_desk->channels(), u"5–6") << "not what is recorded";
    EXPECT_FALSE(m_desk->canRaiseChannels());
    selectDevice(2);
    EXPECT_FALSE(m_desk->hasChannels());
}

TEST_F(DeskTest, PrintsTheFiguresOfATakeAndKeepsThem)
{
    const CaptureStats clean{.frames = 180'816'000, .audioSpan = 100, .hostSpan = 100.0013, .peak = 0.8128F};
    CaptureStats torn{.frames = 1, .discontinuities = 1'234, .lostFrames = 48'000, .overflowFrames = 512};
    torn.peak = 0.9999F;
    torn.writeErrors = 3;
    const CaptureStats silent{.audioSpan = 100, .hostSpan = 100.00000001, .droppedCallbacks = 2};
    const std::vector<std::pair<CaptureStats, QStringList>> cases{
        {clean, {u"180,816,000 frames in 0 gaps"_s, u"nothing"_s, u"0"_s, u"−0.0013%"_s, u"−1.8 dB"_s}},
        {torn, {u"1 frames in 1,234 gaps"_s, u"48,512 frames"_s, u"3"_s, u"+0.0000%"_s, u"0.0 dB"_s}},
        {silent, {u"0 frames in 0 gaps"_s, u"2 blocks"_s, u"0"_s, u"+0.0000%"_s, u"−120.0 dB"_s}},
    };
    for (const auto& [stats, figures] : cases) {
        EXPECT_EQ(Figures::ofTake(stats), figures);
    }
    EXPECT_EQ(Figures::withMinus(u"DDJ-400: peak -2 dB (-3.5), é-2, A--1"_s), u"DDJ-400: peak −2 dB (−3.5), é-2, A--1");
    open();
    EXPECT_EQ(m_desk->figures(), QStringList());
    RecorderState take = m_take;
    take.stats = clean;
    runTake(take);
    EXPECT_EQ(m_desk->figures(), cases[0].second);
    m_recorder.last = take;
    m_recorder.last->stats = torn;
    runTake(std::nullopt);
    EXPECT_EQ(m_desk->figures(), cases[1].second) << "not the final account";
    runTake(test::takeState(u"/b.caf"_s, u"mixer"_s));
    EXPECT_EQ(m_desk->figures(), QStringList()) << "those of an earlier take";
}

TEST_F(DeskTest, SaysWhatTheDeckShowsOnceASecond)
{
    using namespace std::chrono_literals;
    open();
    QStringList told;
    QObject::connect(m_desk.get(), &Desk::deckTwinChanged, m_desk.get(), [&] { told << m_desk->deckTwin(); });
    EXPECT_EQ(m_desk->deckTwin(), u"Setup");
    m_model->setSelected(mixer);
    for (const float peak : {-20.0F, -9.44F}) {
        m_model->setLevels({.holdLeft = -50, .holdRight = peak});
    }
    m_scheduler.advance(1s);
    m_model->setLevels({.holdLeft = 0.5F, .clipped = true});
    m_scheduler.advance(3s);
    m_model->setLevels({.holdLeft = -6.4F});
    RecorderState take = m_take;
    take.startedAt = m_scheduler.wallClock().addSecs(-3599);
    runTake(take);
    m_scheduler.advance(2s);
    EXPECT_EQ(told,
        (QStringList{u"Ready, no signal"_s, u"Ready, peak −9.4 dB"_s, u"Ready, clipped"_s, u"Ready, peak −6.4 dB"_s,
            u"Recording, 1:00:00, peak −6.4 dB"_s, u"Recording, 1:00:01, peak −6.4 dB"_s}));
}

TEST_F(DeskTest, NumbersTheTakeWithoutAJump)
{
    open();
    QList<int> numbers{m_desk->takeNumber()};
    QObject::connect(m_desk.get(), &Desk::takeNumberChanged, m_desk.get(), [&] { numbers << m_desk->takeNumber(); });
    m_model->setTakes(std::vector<Take>(2));
    runTake(test::takeState(u"/3"_s, u"mixer"_s));
    m_model->setTakes(std::vector<Take>(1));
    runTake(std::nullopt);
    EXPECT_EQ(numbers, (QList<int>{1, 3})) << "before the folder was read again";
    m_model->setTakes(std::vector<Take>(3));
    EXPECT_EQ(numbers, (QList<int>{1, 3, 4}));
    EXPECT_EQ(m_desk->playLastText(), u"Play the Last Take");
}

TEST_F(DeskTest, ListensWithTheFirstScreenUnlessAGuideComesBefore)
{
    for (const auto& [guide, didSetup, listens] : {std::tuple(Guide::no, false, true),
             std::tuple(Guide::yes, false, false), std::tuple(Guide::yes, true, true)}) {
        open(guide);
        m_model->setDidSetup(didSetup);
        m_permission->requests = 0;
        m_desk->addMeterUser();
        m_scheduler.settle();
        EXPECT_EQ(m_permission->requests > 0, listens);
    }
}

}  // namespace vantiro
