// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/MadeSet.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/RampSignal.h"
#include "platform/rig/VirtualDevice.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pipewire/filter.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    bool waitFor(const std::function<bool()>& predicate, std::chrono::milliseconds limit = 5s)
    {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!predicate()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }

    // A bare client with one mono port a channel that keeps all it hears: what a recorder is to the gear.
    class Listener {
    public:
        struct Cycle {
            spa_io_clock clock;
            std::int64_t firstSample;
        };

        explicit Listener(int channels)
        {
            pw_init(nullptr, nullptr);
            m_samples.resize(static_cast<std::size_t>(channels));
            for (auto& channel : m_samples) {
                channel.reserve(1U << 20);
            }
            m_cycles.reserve(1U << 16);
            m_loop = pw_thread_loop_new("listener", nullptr);
            m_context = pw_context_new(pw_thread_loop_get_loop(m_loop), nullptr, 0);
            m_core = pw_context_connect(m_context, nullptr, 0);
            m_filter = pw_filter_new(m_core, "listener", pw_properties_new(PW_KEY_NODE_NAME, "listener", nullptr));
            m_events.version = PW_VERSION_FILTER_EVENTS;
            m_events.process = [](void* self, spa_io_position* position) {
                static_cast<Listener*>(self)->process(*position);
            };
            pw_filter_add_listener(m_filter, &m_hook, &m_events, this);
            for (int channel = 0; channel < channels; ++channel) {
                m_ports.push_back(
                    pw_filter_add_port(m_filter, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, sizeof(int),
                        pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME,
                            inputName(channel).c_str(), nullptr),
                        nullptr, 0));
            }
            pw_filter_connect(m_filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
            pw_thread_loop_start(m_loop);
            waitFor([this] { return locked([this] { return pw_filter_get_node_id(m_filter) != SPA_ID_INVALID; }); });
        }

        ~Listener()
        {
            pw_thread_loop_stop(m_loop);
            std::ranges::for_each(m_links, pw_proxy_destroy);
            pw_filter_destroy(m_filter);
            pw_core_disconnect(m_core);
            pw_context_destroy(m_context);
            pw_thread_loop_destroy(m_loop);
        }

        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

        // Links the named ports of a node to our own, from `first` on.
        void link(std::uint32_t node, const std::vector<std::string>& ports, int first = 0)
        {
            locked([&] {
                for (std::size_t port = 0; port < ports.size(); ++port) {
                    pw_properties* properties = pw_properties_new(PW_KEY_LINK_OUTPUT_NODE, std::to_string(node).c_str(),
                        PW_KEY_LINK_OUTPUT_PORT, ports[port].c_str(), PW_KEY_LINK_INPUT_NODE,
                        std::to_string(pw_filter_get_node_id(m_filter)).c_str(), PW_KEY_LINK_INPUT_PORT,
                        inputName(first + static_cast<int>(port)).c_str(), nullptr);
                    m_links.push_back(static_cast<pw_proxy*>(pw_core_create_object(
                        m_core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0)));
                    pw_properties_free(properties);
                }
                return true;
            });
        }

        [[nodiscard]] std::int64_t frames() const { return m_frames.load(std::memory_order_acquire); }
        [[nodiscard]] bool hears(std::int64_t count)
        {
            const std::int64_t target = frames() + count;
            return waitFor([&] { return frames() >= target; }, 10s);
        }

        // What was heard up to now. The callback appends beside us, within what was reserved.
        [[nodiscard]] std::vector<std::int32_t> channel(int index) const
        {
            const auto count = static_cast<std::ptrdiff_t>(frames());
            const float* data = m_samples[static_cast<std::size_t>(index)].data();
            std::vector<std::int32_t> result;
            std::transform(data, data + count, std::back_inserter(result),
                [](float value) { return static_cast<std::int32_t>(std::lrint(value * 8388608.0F)); });
            return result;
        }
        [[nodiscard]] std::vector<Cycle> cycles() const
        {
            const std::int64_t count = m_cycleCount.load(std::memory_order_acquire);
            return {m_cycles.data(), m_cycles.data() + count};
        }
        [[nodiscard]] spa_io_clock lastClock() const
        {
            return m_cycles[static_cast<std::size_t>(m_cycleCount.load(std::memory_order_acquire) - 1)].clock;
        }

    private:
        static std::string inputName(int channel) { return "in_" + std::to_string(channel); }

        template <class Work>
        bool locked(Work&& work)
        {
            pw_thread_loop_lock(m_loop);
            const bool result = work();
            pw_thread_loop_unlock(m_loop);
            return result;
        }

        void process(const spa_io_position& position)
        {
            const auto count = static_cast<std::uint32_t>(position.clock.duration);
            std::vector<float*> buffers;
            for (void* port : m_ports) {
                buffers.push_back(static_cast<float*>(pw_filter_get_dsp_buffer(port, count)));
            }
            const bool isWhole = std::ranges::none_of(buffers, [](float* buffer) { return buffer == nullptr; });
            if (!isWhole || m_samples[0].size() + count > m_samples[0].capacity()) {
                return;
            }
            m_cycles.push_back({position.clock, frames()});
            for (std::size_t channel = 0; channel < buffers.size(); ++channel) {
                m_samples[channel].insert(m_samples[channel].end(), buffers[channel], buffers[channel] + count);
            }
            m_frames.fetch_add(count, std::memory_order_release);
            m_cycleCount.fetch_add(1, std::memory_order_release);
        }

        pw_thread_loop* m_loop = nullptr;
        pw_context* m_context = nullptr;
        pw_core* m_core = nullptr;
        pw_filter* m_filter = nullptr;
        pw_filter_events m_events{};
        spa_hook m_hook{};
        std::vector<pw_proxy*> m_links;
        std::vector<void*> m_ports;
        std::vector<std::vector<float>> m_samples;
        std::vector<Cycle> m_cycles;
        std::atomic<std::int64_t> m_frames = 0;
        std::atomic<std::int64_t> m_cycleCount = 0;
    };

    std::vector<std::string> portNames(int channels, const std::string& prefix = "capture_")
    {
        if (channels == 2) {
            return {prefix + "FL", prefix + "FR"};
        }
        std::vector<std::string> names;
        for (int channel = 0; channel < channels; ++channel) {
            names.push_back(prefix + "AUX" + std::to_string(channel));
        }
        return names;
    }

    // How far the position, the time (in frames) and the content went astray over all cycles.
    struct Strays {
        std::int64_t position = 0;
        std::int64_t time = 0;
        std::int64_t content = 0;

        bool operator==(const Strays&) const = default;
    };

    std::ostream& operator<<(std::ostream& out, const Strays& strays)
    {
        return out << "position " << strays.position << ", time " << strays.time << ", content " << strays.content;
    }

    Strays straysOf(const Listener& listener)
    {
        Strays result;
        const auto samples = listener.channel(0);
        const auto cycles = listener.cycles();
        for (std::size_t index = 1; index < cycles.size(); ++index) {
            const auto& before = cycles[index - 1].clock;
            const auto& after = cycles[index].clock;
            const auto frames = static_cast<std::int64_t>(before.duration);
            result.position += static_cast<std::int64_t>(after.position - before.position) - frames;
            const double seconds = static_cast<double>(static_cast<std::int64_t>(after.nsec - before.nsec)) / 1e9;
            result.time += std::llround(seconds * before.rate.denom) - frames;
        }
        if (const auto report = RampSignal::check(samples, 0)) {
            result.content = report->jump.value_or(report->firstBreak ? -1 : 0);
        } else {
            result.content = -2;
        }
        return result;
    }

}  // namespace

class Rig : public ::testing::Test {
protected:
    void SetUp() override
    {
        auto graph = PrivateGraph::start(m_folder.path());
        ASSERT_TRUE(graph) << errorText(graph.error()).toStdString();
        m_graph = std::move(*graph);
        m_graph->applyEnvironment();
    }

    std::unique_ptr<VirtualDevice> device(VirtualDevice::Options options)
    {
        if (options.name.isEmpty()) {
            options.name = QStringLiteral("rig.card");
        }
        options.render = RampSignal::render;
        auto made = VirtualDevice::make(m_graph->socketPath(), options);
        EXPECT_TRUE(made) << errorText(made.error()).toStdString();
        return made ? std::move(*made) : nullptr;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PrivateGraph> m_graph;
};

TEST_F(Rig, EverySampleArrivesUnaltered)
{
    struct Case {
        int channels;
        int rate;
        int quantum;
    };
    for (const Case& test : {Case{2, 48000, 256}, Case{8, 48000, 128}, Case{2, 96000, 512}, Case{32, 44100, 1024}}) {
        SCOPED_TRACE(test.channels);
        auto card = device({.channels = test.channels, .sampleRate = test.rate, .quantum = test.quantum});
        ASSERT_NE(card, nullptr);
        Listener listener(test.channels);
        listener.link(card->nodeId(), portNames(test.channels));
        ASSERT_TRUE(listener.hears(test.rate / 2));
        for (int channel = 0; channel < test.channels; ++channel) {
            const auto report = RampSignal::check(listener.channel(channel), channel);
            ASSERT_TRUE(report);
            EXPECT_FALSE(report->firstBreak) << "channel " << channel << " at " << *report->firstBreak;
        }
        for (const auto& cycle : listener.cycles()) {
            ASSERT_EQ(cycle.clock.rate.denom, static_cast<std::uint32_t>(test.rate));
            ASSERT_EQ(cycle.clock.duration, static_cast<std::uint64_t>(test.quantum));
        }
        EXPECT_EQ(straysOf(listener), Strays{});
    }
}

TEST_F(Rig, AFaultShowsOnceAndExactly)
{
    struct Case {
        const char* name;
        std::function<void(VirtualDevice&)> inject;
        Strays strays;
    };
    const std::vector<Case> cases = {
        {"one frame lost and told", [](VirtualDevice& card) { card.jumpPosition(1); }, {1, 0, 1}},
        {"a backward jump", [](VirtualDevice& card) { card.jumpPosition(-300); }, {-300, 0, -300}},
        {"a loss that the position hides", [](VirtualDevice& card) { card.overrun(4800); }, {0, 4800, 4800}},
        {"a hang that delivers late",
            [](VirtualDevice& card) {
                card.hang();
                std::this_thread::sleep_for(100ms);
                card.resumeCycles(VirtualDevice::Resume::bursting);
            },
            {0, 0, 0}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        auto card = device({});
        ASSERT_NE(card, nullptr);
        Listener listener(2);
        listener.link(card->nodeId(), portNames(2));
        ASSERT_TRUE(listener.hears(4000));
        test.inject(*card);
        ASSERT_TRUE(listener.hears(8000));
        EXPECT_EQ(straysOf(listener), test.strays);
    }
}

TEST_F(Rig, ADeviceThatHungGoesOnAfterExactlyTheFramesThatItMissed)
{
    auto card = device({});
    ASSERT_NE(card, nullptr);
    Listener listener(2);
    listener.link(card->nodeId(), portNames(2));
    ASSERT_TRUE(listener.hears(4000));
    card->hang();
    const std::int64_t cycles = card->cycles();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(card->cycles(), cycles);
    EXPECT_TRUE(card->isConnected());
    card->resumeCycles();
    ASSERT_TRUE(listener.hears(8000));
    const Strays strays = straysOf(listener);
    EXPECT_GT(strays.position, 48000 / 5 - 2 * 256);
    EXPECT_EQ(strays.content, strays.position);
    EXPECT_EQ(strays.time, strays.position);
}

TEST_F(Rig, RateQuantumAndClockChangeWithoutALostSample)
{
    auto card = device({});
    ASSERT_NE(card, nullptr);
    Listener listener(2);
    listener.link(card->nodeId(), portNames(2));
    ASSERT_TRUE(listener.hears(4000));
    const std::uint32_t ownId = listener.lastClock().id;
    card->setRate(44100);
    card->setQuantum(512);
    card->setClockId(4711);
    ASSERT_TRUE(listener.hears(8000));
    const spa_io_clock changed = listener.lastClock();
    EXPECT_EQ(changed.rate.denom, 44100U);
    EXPECT_EQ(changed.duration, 512U);
    EXPECT_EQ(changed.id, 4711U);
    card->setClockId(0);
    ASSERT_TRUE(listener.hears(4000));
    EXPECT_EQ(listener.lastClock().id, ownId);
    EXPECT_EQ(straysOf(listener).content, 0);
}

TEST_F(Rig, ADeviceRestsWhileNobodyListensAndWakesAtOnce)
{
    auto card = device({});
    ASSERT_NE(card, nullptr);
    for (int round = 0; round < 3; ++round) {
        const std::int64_t resting = card->contentPosition();
        std::this_thread::sleep_for(50ms);
        EXPECT_EQ(card->contentPosition(), resting);

        auto listener = std::make_unique<Listener>(2);
        const auto linked = std::chrono::steady_clock::now();
        listener->link(card->nodeId(), portNames(2));
        ASSERT_TRUE(listener->hears(1));
        EXPECT_LT(std::chrono::steady_clock::now() - linked, 500ms);
        ASSERT_TRUE(listener->hears(4800));
        const auto report = RampSignal::check(listener->channel(0), 0);
        ASSERT_TRUE(report);
        EXPECT_FALSE(report->firstBreak);
        EXPECT_GE(report->start, resting);
        listener.reset();
        ASSERT_TRUE(waitFor([&] {
            const std::int64_t before = card->cycles();
            std::this_thread::sleep_for(20ms);
            return card->cycles() == before;
        }));
    }
}

TEST_F(Rig, AProgramIsDrivenByTheInterfaceBesideIt)
{
    auto card = device({.channels = 2});
    auto program = device({.name = QStringLiteral("rig.program"),
        .clock = VirtualDeviceOptions::Clock::borrowed,
        .properties = {{QStringLiteral("media.class"), QStringLiteral("Stream/Output/Audio")}}});
    ASSERT_TRUE(card && program);
    Listener listener(4);
    listener.link(card->nodeId(), portNames(2));
    listener.link(program->nodeId(), portNames(2, "output_"), 2);
    ASSERT_TRUE(listener.hears(24000));
    // The program's channels are the ramp's first two, heard on the listener's last two ports. While the links are
    // being made, the graph may leave out a cycle of a node that joins.
    constexpr std::size_t settling = 4800;
    for (const auto& [port, channel] : {std::pair{1, 1}, std::pair{2, 0}, std::pair{3, 1}}) {
        const auto samples = listener.channel(port);
        const auto report = RampSignal::check(std::span(samples).subspan(settling), channel);
        ASSERT_TRUE(report) << port;
        EXPECT_FALSE(report->firstBreak) << port;
    }
}

TEST_F(Rig, TheDeviceOutlivesADaemonThatHangsAndNoticesOneThatDies)
{
    auto card = device({});
    ASSERT_NE(card, nullptr);
    auto listener = std::make_unique<Listener>(2);
    listener->link(card->nodeId(), portNames(2));
    ASSERT_TRUE(listener->hears(4000));
    m_graph->pause();
    const std::int64_t before = card->contentPosition();
    const auto paused = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(600ms);
    m_graph->resume();
    ASSERT_TRUE(listener->hears(12000));
    // The interface kept its rate, and what is heard once it has caught up stands at its place on the clock.
    EXPECT_TRUE(waitFor([&] {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - paused;
        return static_cast<double>(card->contentPosition() - before) > passed.count() * 48000 - 2400;
    }));
    const std::int64_t caughtUp = listener->frames();
    ASSERT_TRUE(listener->hears(4800));
    // In this order, since it goes on hearing: every cycle's samples are there.
    const auto cycles = listener->cycles();
    const auto heard = listener->channel(0);
    for (const auto& cycle : cycles) {
        if (cycle.firstSample >= caughtUp) {
            const auto report =
                RampSignal::check(std::span(heard).subspan(static_cast<std::size_t>(cycle.firstSample), 16), 0);
            ASSERT_TRUE(report);
            ASSERT_EQ(report->start, static_cast<std::int64_t>(cycle.clock.position));
        }
    }

    const pid_t former = m_graph->processId();
    m_graph->kill();
    EXPECT_FALSE(m_graph->isRunning());
    EXPECT_TRUE(waitFor([&] { return !card->isConnected(); }));
    listener.reset();
    card.reset();
    ASSERT_TRUE(m_graph->restart());
    EXPECT_NE(m_graph->processId(), former);
    card = device({});
    ASSERT_NE(card, nullptr);
    Listener again(2);
    again.link(card->nodeId(), portNames(2));
    EXPECT_TRUE(again.hears(4000));

    card->disconnect();
    EXPECT_FALSE(card->isConnected());
    EXPECT_FALSE(again.hears(0) && waitFor([&, heard = again.frames()] { return again.frames() > heard; }, 200ms));
}

TEST(RigFailures, AreTold)
{
    QTemporaryDir folder;
    EXPECT_FALSE(VirtualDevice::make(folder.filePath(QStringLiteral("pipewire-0")), {.name = QStringLiteral("card")}));
    EXPECT_FALSE(PrivateGraph::start(folder.filePath(QString(120, QLatin1Char('x')))));
}

TEST(RampSignal, ShowsEveryKindOfDamage)
{
    const auto ramp = [](std::int64_t from, std::int64_t to) {
        std::vector<std::int32_t> samples;
        for (std::int64_t frame = from; frame < to; ++frame) {
            samples.push_back(RampSignal::sample(1, frame));
        }
        return samples;
    };
    const auto joined = [](std::vector<std::int32_t> first, const std::vector<std::int32_t>& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    };
    constexpr std::int64_t period = 1 << 24;
    auto altered = ramp(0, 100);
    altered[50] ^= 1;
    using Report = RampSignal::Report;
    EXPECT_EQ(RampSignal::check(ramp(period - 50, period + 50), 1), (Report{period - 50, {}, {}}));
    EXPECT_EQ(RampSignal::check(joined(ramp(7, 20), ramp(21, 40)), 1), (Report{7, 13, 1}));
    EXPECT_EQ(RampSignal::check(joined(ramp(7, 20), ramp(19, 40)), 1), (Report{7, 13, -1}));
    EXPECT_EQ(RampSignal::check(altered, 1), (Report{0, 50, std::nullopt}));
    EXPECT_NE(RampSignal::check(ramp(0, 100), 0), (Report{0, {}, {}})) << "another channel looks the same";
    EXPECT_FALSE(RampSignal::check(std::vector<std::int32_t>(100, 5), 1));
    EXPECT_EQ(RampSignal::value(0, 0), -1.0F);
}

TEST(MadeSet, SoundsLikeAMixAtEveryRate)
{
    for (const int rate : {44100, 48000, 96000}) {
        const MadeSet set(rate);
        const auto rms = [&](double from, double to) {
            double sum = 0.0;
            std::array<double, 2> low{};
            double energy = 0.0;
            float peak = 0.0F;
            const auto first = static_cast<std::int64_t>(from * rate);
            const auto last = static_cast<std::int64_t>(to * rate);
            for (std::int64_t frame = first; frame < last; ++frame) {
                const auto [left, right] = set.frame(frame);
                peak = std::max({peak, std::abs(left), std::abs(right)});
                energy += static_cast<double>(left) * static_cast<double>(left);
                // Two poles at 80 Hz leave the kick and little else.
                const double pole = 2.0 * std::numbers::pi * 80.0 / rate;
                low[0] += (static_cast<double>(left) - low[0]) * pole;
                low[1] += (low[0] - low[1]) * pole;
                sum += low[1] * low[1];
            }
            const auto count = static_cast<double>(last - first);
            return std::array<double, 3>{10 * std::log10(energy / count), 10 * std::log10(sum / count),
                20 * std::log10(static_cast<double>(peak))};
        };
        const auto [loud, loudBass, peak] = rms(10.0, 20.0);
        EXPECT_NEAR(loud, -17.0, 2.0);
        EXPECT_LE(peak, -5.5);
        EXPECT_GE(peak, -8.0);
        const auto [quiet, quietBass, ignored] = rms(24.0, 27.0);
        EXPECT_GT(quiet, -30.0);
        EXPECT_LT(quietBass, loudBass - 10.0);
    }
}

TEST(MadeSet, IsAFunctionOfTheFrame)
{
    const MadeSet set(48000);
    std::vector<float> left(1000);
    std::vector<float> right(1000);
    std::vector<float> third(1000, 1.0F);
    const std::array<float*, 3> channels = {left.data(), right.data(), third.data()};
    constexpr std::int64_t start = 1'500'000;
    set.render(channels, 1000, start);
    const std::int64_t length = std::llround(MadeSet::lengthSeconds * 48000);
    for (int frame = 0; frame < 1000; ++frame) {
        ASSERT_EQ((std::array{left[static_cast<std::size_t>(frame)], right[static_cast<std::size_t>(frame)]}),
            set.frame(start + length + frame));
    }
    EXPECT_NE(left, right);
    EXPECT_EQ(third, std::vector<float>(1000, 0.0F));
}

}  // namespace vantiro
