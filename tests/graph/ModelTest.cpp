// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ModelFlows.h"
#include "app/model/QtScheduler.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/desktop/DesktopPermission.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "tests/graph/TapTest.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <cmath>
#include <csignal>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    /// What a device plays: noise up to this magnitude, or silence.
    VirtualDevice::Options::Render noise(float magnitude)
    {
        return
            [magnitude, seed = std::uint32_t{1}](std::span<float* const> channels, int frames, std::int64_t) mutable {
                for (int frame = 0; frame < frames; ++frame) {
                    for (float* channel : channels) {
                        seed = seed * 1664525U + 1013904223U;
                        channel[frame] = magnitude * (static_cast<float>(seed >> 8) / 8388608.0F - 1.0F);
                    }
                }
            };
    }

    constexpr float goodLevel = 0.4F;

    /// The application without its window, on the real graph.
    class ModelTest : public test::TapTest {
    protected:
        /// One running application.
        struct Instance {
            explicit Instance(ModelServices services)
                : model(std::make_unique<SettingsStore>(VantiroPaths::settingsFile()),
                      SourceMemory::load(VantiroPaths::sourcesFile()), {})
                , flows(model, services)
            { }

            [[nodiscard]] std::optional<QString> selected() const
            {
                return model.selected() ? std::optional(model.selected()->id) : std::nullopt;
            }

            AppModel model;
            ModelFlows flows;
        };

        std::unique_ptr<Instance> open()
        {
            if (!m_audio) {
                m_audio = std::make_unique<PipeWireAudio>();
            }
            RecorderServices recorder = RecorderServices::real();
            recorder.start = [](const RecorderClient::Request& request) { return start(request); };
            auto instance = std::make_unique<Instance>(ModelServices{.audio = *m_audio,
                .permission = std::make_shared<DesktopPermission>(),
                .scheduler = m_scheduler,
                .recorder = std::move(recorder)});
            instance->flows.start();
            return instance;
        }

        [[nodiscard]] std::unique_ptr<VirtualDevice> interface(
            const QString& name, float magnitude, int sampleRate = 48'000) const
        {
            auto made = VirtualDevice::make(m_graph->socketPath(),
                {.name = name,
                    .description = u"Interface "_s + name,
                    .sampleRate = sampleRate,
                    .properties = {{u"device.bus"_s, u"usb"_s}},
                    .render = noise(magnitude)});
            EXPECT_TRUE(made) << qPrintable(errorText(made.error()));
            return made ? *std::move(made) : nullptr;
        }

        /// Lets the event loop run until the predicate holds; how long that took, or nothing.
        template <class Predicate>
        static std::optional<Clock::duration> eventually(Predicate predicate, Clock::duration limit = 15s)
        {
            const auto start = Clock::now();
            while (!predicate()) {
                if (Clock::now() - start > limit) {
                    return std::nullopt;
                }
                QCoreApplication::processEvents(QEventLoop::AllEvents);
                QThread::msleep(2);
            }
            return Clock::now() - start;
        }

        /// What the model makes of what it heard, for whoever has to find out why a test failed.
        static std::string account(const Instance& instance)
        {
            QString text = instance.model.detecting() ? u"listening;"_s : u"idle;"_s;
            for (const RankedSource& source : instance.model.sources()) {
                const SourceObservation& seen = source.observation;
                text += u" %1: %2 points, peak %3 dB%4;"_s.arg(seen.ref.descriptor())
                            .arg(source.score)
                            .arg(seen.peakDB ? QString::number(static_cast<double>(*seen.peakDB)) : u"?"_s,
                                seen.isPlaying ? u", plays"_s : QString());
            }
            return text.toStdString();
        }

        static bool hears(const Instance& instance) { return instance.model.levels().left > -20; }

    private:
        int m_argumentCount = 1;
        char m_name[5] = "test";
        char* m_arguments[2] = {m_name, nullptr};
        QCoreApplication m_application{m_argumentCount, m_arguments};

    protected:
        std::unique_ptr<PipeWireAudio> m_audio;  ///< Made when the graph is there.
        QtScheduler m_scheduler;
    };

}  // namespace

TEST_F(ModelTest, GoesFromThePressThroughTheProbeToTheTakeAndToTheWordsOfItsEnd)
{
    const auto silent = interface(u"a-silent"_s, 0);
    const auto mixer = interface(u"mixer"_s, goodLevel);
    const auto first = open();
    const auto second = open();

    first->flows.takes().startTake();
    EXPECT_TRUE(first->model.recordPressedAt());
    ASSERT_TRUE(eventually([&] { return first->model.recorder().has_value(); }))
        << qPrintable(first->model.errorMessage().value_or(u"no message"_s));
    EXPECT_EQ(first->selected(), u"mixer"_s);
    EXPECT_EQ(first->model.deckState().kind, DeckState::Kind::recording);
    EXPECT_FALSE(first->model.errorMessage());
    ASSERT_TRUE(eventually([&] { return second->model.recorder().has_value(); }, 2s));
    EXPECT_EQ(second->model.recorder()->path, first->model.recorder()->path);
    const QString path = first->model.recorder()->path;
    EXPECT_EQ(QFileInfo(path).path(), first->model.takesFolder());

    mixer->disconnect();
    const QString sentence =
        u"Interface mixer was disconnected. The take ends where the device left, and the file is intact."_s;
    for (const auto* instance : {first.get(), second.get()}) {
        EXPECT_TRUE(eventually([&] { return instance->model.errorMessage() == sentence; }))
            << qPrintable(instance->model.errorMessage().value_or(u"no message"_s));
    }
    EXPECT_TRUE(QFileInfo::exists(path));
    EXPECT_EQ(first->model.memory().lastRate(SourceRef::device(u"mixer"_s)), 48'000);
}

TEST_F(ModelTest, AnApplicationOpenedDuringATakeShowsItAndTellsWhenItsRecorderWasKilled)
{
    const auto mixer = interface(u"mixer"_s, goodLevel);
    auto started = open();
    started->flows.takes().startTake();
    ASSERT_TRUE(eventually([&] { return started->model.recorder().has_value(); }));
    const RecorderState take = *started->model.recorder();
    started.reset();

    const auto opened = open();
    ASSERT_TRUE(opened->model.recorder()) << "the first look comes before the first picture";
    EXPECT_EQ(opened->model.recorder()->startedAt, take.startedAt);
    EXPECT_EQ(opened->model.deckState(), (DeckState{.kind = DeckState::Kind::recording, .since = take.startedAt}));
    opened->flows.sources().ensureListening();
    EXPECT_TRUE(eventually([&] { return opened->selected() == u"mixer"_s; }));
    EXPECT_TRUE(opened->model.sources().empty()) << "no input is opened during a take";

    ::kill(take.pid, SIGKILL);
    EXPECT_TRUE(eventually([&] {
        return opened->model.errorMessage()
            == u"The recorder stopped unexpectedly. The take up to that moment is in your takes folder."_s;
    }));
    EXPECT_TRUE(QFileInfo::exists(take.path));
    EXPECT_TRUE(eventually([&] { return !opened->model.sources().empty(); })) << "what was left out is made up for";
}

TEST_F(ModelTest, PicksAPlayingProgramBeforeASilentInterfaceAndFollowsTheHardware)
{
    const auto silent = interface(u"silent"_s, 0);
    const auto instance = open();
    instance->flows.sources().ensureListening();
    ASSERT_TRUE(eventually([&] { return instance->selected() == u"silent"_s; }));

    auto deck = program(u"deck"_s, u"org.mixxx.Test"_s);
    link(u"deck"_s, u"speakers"_s);
    ASSERT_TRUE(eventually([&] { return instance->selected() == u"org.mixxx.Test"_s; })) << account(*instance);

    // An interface that carries more is better, and a source that goes keeps its place until somebody asks.
    auto mixer = interface(u"mixer"_s, goodLevel);
    ASSERT_TRUE(eventually([&] { return instance->selected() == u"mixer"_s; }));
    ASSERT_TRUE(eventually([&] { return !instance->model.detecting(); }));
    mixer->disconnect();
    ASSERT_TRUE(eventually([&] { return instance->model.sources().size() == 2 && !instance->model.detecting(); }));
    EXPECT_EQ(instance->selected(), u"mixer"_s);
    EXPECT_EQ(instance->model.sourceName(), u"Interface mixer"_s);
    instance->flows.takes().startTake();
    EXPECT_EQ(instance->model.errorMessage(),
        u"Interface mixer is not connected. Check the cable, or pick another source."_s);

    // The user's choice is kept for this hardware, by another run too.
    instance->flows.sources().choose(SourceRef::device(u"silent"_s));
    const auto another = open();
    another->flows.sources().ensureListening();
    EXPECT_TRUE(eventually([&] { return another->selected() == u"silent"_s && another->model.selectionIsManual(); }));
}

TEST_F(ModelTest, TheMeterFollowsItsSourceThroughEverything)
{
    auto mixer = interface(u"mixer"_s, goodLevel);
    const auto instance = open();
    instance->flows.meter().addUser();
    instance->flows.sources().ensureListening();
    ASSERT_TRUE(eventually([&] { return hears(*instance); }));

    const auto falls = [&] { return eventually([&] { return instance->model.levels().left <= -59; }).has_value(); };
    const auto isBack = [&](const char* event) {
        const auto time = eventually([&] { return hears(*instance); });
        EXPECT_TRUE(time && *time < 1s) << event << ": " << (time ? std::chrono::duration<double>(*time).count() : -1)
                                        << " s";
    };
    mixer->disconnect();
    EXPECT_TRUE(falls());
    mixer = interface(u"mixer"_s, goodLevel);
    isBack("plugged in again");

    mixer->setRate(44'100);
    EXPECT_TRUE(eventually([&] { return instance->model.meterFormat()->sampleRate == 44'100; }, 2s)) << "a new rate";
    isBack("a new rate");

    mixer->hang();
    EXPECT_TRUE(falls());
    mixer->resumeCycles();
    isBack("an input that fell silent");

    mixer.reset();
    m_graph->kill();
    EXPECT_TRUE(falls());
    ASSERT_TRUE(m_graph->restart());
    mixer = interface(u"mixer"_s, goodLevel);
    // The service itself is looked for less and less often.
    EXPECT_TRUE(eventually([&] { return m_audio->device(u"mixer"_s).has_value(); }, 6s));
    isBack("a new audio service");

    EXPECT_FALSE(instance->model.errorMessage());
    EXPECT_EQ(instance->selected(), u"mixer"_s);
    instance->flows.meter().removeUser();
    EXPECT_EQ(instance->model.levels(), MeterLevels{});
}

}  // namespace vantiro
