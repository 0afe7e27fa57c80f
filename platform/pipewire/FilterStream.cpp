// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/FilterStream.h"

#include <pipewire/filter.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

#include <pthread.h>
#include <sched.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto firstCycleLimit = 2s;
    constexpr auto firstCyclePause = 1ms;
    constexpr auto forcedRateLimit = 500ms;
    constexpr long lookAgainNanoseconds = 250'000'000;
    /// Frames; more than any graph runs with.
    constexpr std::size_t longestCycle = 65'536;
    /// The registry tells of a link some cycles before or after the audio thread meets it.
    constexpr int cyclesNearLinkChange = 32;

    std::uint64_t monotonicNanoseconds() noexcept
    {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U + static_cast<std::uint64_t>(now.tv_nsec);
    }

}  // namespace

std::expected<std::unique_ptr<CaptureStream>, int> FilterStream::open(
    std::shared_ptr<GraphMirror> mirror, std::unique_ptr<LinkPlan> plan, const Options& options)
{
    std::unique_ptr<FilterStream> stream(new FilterStream(std::move(mirror), std::move(plan), options));
    if (const int status = stream->connect(options); status != 0) {
        return std::unexpected(status);
    }
    stream->waitForFirstCycle(options.forcedRate);
    return stream;
}

FilterStream::FilterStream(std::shared_ptr<GraphMirror> mirror, std::unique_ptr<LinkPlan> plan, const Options& options)
    : m_mirror(std::move(mirror))
    , m_plan(std::move(plan))
    , m_sampleRate(options.nominalRate)
    , m_channels(options.channels)
    , m_absence(options.absence)
    , m_links(*m_mirror)
    , m_buffers(options.sourceChannels)
    , m_silence(options.absence == Absence::silence ? longestCycle : 0)
{ }

FilterStream::~FilterStream()
{
    stop();
    const LoopLock lock(m_mirror->loop());
    m_mirror->remove(*this);
    if (m_timer != nullptr) {
        pw_loop_destroy_source(pw_thread_loop_get_loop(m_mirror->loop()), m_timer);
    }
    destroyFilter();
}

int FilterStream::connect(const Options& options)
{
    const LoopLock lock(m_mirror->loop());
    if (m_mirror->core() == nullptr || !m_plan->isAlive(m_mirror->current())) {
        return ENODEV;
    }
    pw_properties* properties =
        pw_properties_new(PW_KEY_NODE_NAME, options.nodeName.c_str(), PW_KEY_NODE_DESCRIPTION, "Vantiro",
            PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_ROLE, "Production", nullptr);
    if (options.forcedRate) {
        pw_properties_setf(properties, PW_KEY_NODE_FORCE_RATE, "%d", *options.forcedRate);
    }
    if (m_absence == Absence::silence) {
        pw_properties_set(properties, PW_KEY_NODE_ALWAYS_PROCESS, "true");
    }
    m_filter = pw_filter_new(m_mirror->core(), options.nodeName.c_str(), properties);
    if (m_filter == nullptr) {
        return errno;
    }
    static const pw_filter_events events = [] {
        pw_filter_events table{};
        table.version = PW_VERSION_FILTER_EVENTS;
        table.process = [](void* data, spa_io_position* position) {
            if (position != nullptr) {
                static_cast<FilterStream*>(data)->process(*position);
            }
        };
        return table;
    }();
    pw_filter_add_listener(m_filter, &m_filterHook, &events, this);
    for (const std::size_t channel : options.channels) {
        const std::string name = "input_" + std::to_string(channel + 1);
        void* port = pw_filter_add_port(m_filter, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 1,
            pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME, name.c_str(), nullptr),
            nullptr, 0);
        if (port == nullptr) {
            return errno;
        }
        m_ports.push_back(port);
    }
    if (const int result = pw_filter_connect(m_filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0); result < 0) {
        return -result;
    }
    m_timer = pw_loop_add_timer(
        pw_thread_loop_get_loop(m_mirror->loop()),
        [](void* data, std::uint64_t) { static_cast<FilterStream*>(data)->lookAgain(); }, this);
    timespec period{.tv_sec = 0, .tv_nsec = lookAgainNanoseconds};
    pw_loop_update_timer(pw_thread_loop_get_loop(m_mirror->loop()), m_timer, &period, &period, false);
    m_mirror->add(*this);
    return 0;
}

void FilterStream::waitForFirstCycle(std::optional<int> forcedRate)
{
    const auto wanted = static_cast<std::uint32_t>(forcedRate.value_or(0));
    const auto start = std::chrono::steady_clock::now();
    // A forced rate comes some cycles late, and may be refused; then the rate that runs counts.
    const auto enough = [&](std::chrono::steady_clock::duration waited) {
        return m_complete.load(std::memory_order_acquire)
            && (wanted == 0 || m_rate.load(std::memory_order_relaxed) == wanted || waited > forcedRateLimit);
    };
    for (auto waited = 0ns; waited < firstCycleLimit && isAlive() && !enough(waited);
        waited = std::chrono::steady_clock::now() - start) {
        std::this_thread::sleep_for(firstCyclePause);
    }
    if (m_complete.load(std::memory_order_acquire)) {
        m_sampleRate = m_rate.load(std::memory_order_relaxed);
    }
}

double FilterStream::currentRate() const
{
    // Before the first cycle the nominal rate is the best that is known.
    return m_complete.load(std::memory_order_acquire) ? m_rate.load(std::memory_order_relaxed) : m_sampleRate;
}

int FilterStream::start(AudioBlockHandler& handler, Listener listener)
{
    const LoopLock lock(m_mirror->loop());
    if (m_filter == nullptr) {
        return ENODEV;
    }
    m_listener = std::move(listener);
    m_declaredRate = static_cast<std::uint32_t>(m_sampleRate);
    m_begun = false;
    m_rateReported = false;
    m_handler.store(&handler, std::memory_order_release);
    return 0;
}

void FilterStream::stop()
{
    const LoopLock lock(m_mirror->loop());
    m_listener = {};
    if (m_handler.exchange(nullptr, std::memory_order_acq_rel) == nullptr || m_filter == nullptr) {
        return;
    }
    // A callback that still has the handler is on the audio thread: whatever runs there next runs after it.
    pw_data_loop_invoke(
        m_mirror->dataLoop(), [](spa_loop*, bool, std::uint32_t, const void*, std::size_t, void*) { return 0; }, 0,
        nullptr, 0, true, nullptr);
}

void FilterStream::destroyFilter()
{
    m_links.clear();
    if (m_filter != nullptr) {
        spa_hook_remove(&m_filterHook);
        pw_filter_destroy(m_filter);
        m_filter = nullptr;
        m_ports.clear();
    }
}

QString FilterStream::schedulingNote() const
{
    pw_data_loop* loop = m_mirror->dataLoop();
    spa_thread* thread = loop == nullptr ? nullptr : pw_data_loop_get_thread(loop);
    int policy = 0;
    sched_param parameters{};
    if (thread == nullptr || ::pthread_getschedparam(reinterpret_cast<pthread_t>(thread), &policy, &parameters) != 0) {
        return QStringLiteral("audio thread: scheduling unknown");
    }
    policy &= ~SCHED_RESET_ON_FORK;
    return policy == SCHED_FIFO || policy == SCHED_RR
        ? QStringLiteral("audio thread: real time, priority %1").arg(parameters.sched_priority)
        : QStringLiteral("audio thread: ordinary scheduling, no real-time priority was to be had");
}

void FilterStream::graphChanged(const GraphSnapshot& graph)
{
    if (!m_plan->isAlive(graph)) {
        setAlive(false);
        return;
    }
    holdLinks(graph);
}

void FilterStream::holdLinks(const GraphSnapshot& graph)
{
    if (m_filter == nullptr) {
        return;
    }
    if (m_links.hold(wantedLinks(graph))) {
        m_linkChanges.fetch_add(1, std::memory_order_relaxed);
    }
    m_linked.store(!m_links.isEmpty(), std::memory_order_relaxed);
}

void FilterStream::connectionLost()
{
    destroyFilter();
    setAlive(false);
}

std::vector<PortPair> FilterStream::wantedLinks(const GraphSnapshot& graph) const
{
    const std::vector<GraphPort> own = graph.audioPorts(pw_filter_get_node_id(m_filter), true);
    if (own.size() < m_channels.size()) {
        return {};
    }
    std::vector<PortPair> wanted;
    for (const LinkPlan::Entry& entry : m_plan->entries(graph)) {
        const auto place = std::ranges::find(m_channels, entry.channel);
        if (place != m_channels.end()) {
            wanted.push_back(
                {.output = entry.outputPort, .input = own[static_cast<std::size_t>(place - m_channels.begin())].id});
        }
    }
    return wanted;
}

void FilterStream::setAlive(bool alive)
{
    if (m_alive.exchange(alive, std::memory_order_relaxed) != alive && m_listener.aliveChanged) {
        m_listener.aliveChanged();
    }
}

void FilterStream::lookAgain()
{
    if (m_plan->changesWithTime()) {
        graphChanged(m_mirror->current());
    }
    // The audio thread cannot wake anybody, so its rate is looked at from here.
    const bool changed = m_rate.load(std::memory_order_relaxed) != m_declaredRate;
    if (changed && !m_rateReported && m_complete.load(std::memory_order_acquire) && m_listener.rateChanged) {
        m_rateReported = true;
        m_listener.rateChanged();
    }
}

// RT safe.
void FilterStream::process(const spa_io_position& position) noexcept
{
    const spa_io_clock& clock = position.clock;
    const std::size_t delivered = collect(static_cast<std::uint32_t>(clock.duration));
    // A quiet source is complete as it is, unless it has just been linked and its first buffer is on the way.
    const bool complete = m_absence == Absence::missing
        ? delivered == m_ports.size()
        : m_begun || delivered > 0 || !m_linked.load(std::memory_order_relaxed);
    const std::uint32_t changes = m_linkChanges.load(std::memory_order_relaxed);
    if (changes != m_seenLinkChanges) {
        m_seenLinkChanges = changes;
        m_cyclesSinceLinkChange = 0;
    }
    // A program that goes while a cycle runs makes the graph run that cycle twice, before anybody hears of its links.
    const bool linksChanged = m_absence == Absence::silence || m_cyclesSinceLinkChange < cyclesNearLinkChange;
    const bool audible = m_absence == Absence::missing ? complete || m_begun : delivered > 0;
    const double time = m_clock.advance({.clockId = clock.id,
        .position = clock.position,
        .duration = clock.duration,
        .nanoseconds = clock.nsec,
        .rate = clock.rate.denom,
        .linked = audible,
        .linksChanged = linksChanged});
    m_cyclesSinceLinkChange = std::min(m_cyclesSinceLinkChange + 1, cyclesNearLinkChange);
    if (complete) {
        m_rate.store(clock.rate.denom, std::memory_order_relaxed);
        m_complete.store(true, std::memory_order_release);
    }
    AudioBlockHandler* handler = m_handler.load(std::memory_order_acquire);
    // A take has one rate: what comes at another one is no part of it.
    if (handler == nullptr || clock.rate.denom != m_declaredRate || (!m_begun && !complete)) {
        return;
    }
    m_begun = true;
    handler->process({.buffers = m_buffers, .sampleTime = time, .hostNanoseconds = monotonicNanoseconds()});
}

/// Fetches the cycle's buffers; how many ports had one.
std::size_t FilterStream::collect(std::uint32_t frames) noexcept
{
    std::size_t delivered = 0;
    for (std::size_t index = 0; index < m_ports.size(); ++index) {
        const auto* samples = static_cast<const float*>(pw_filter_get_dsp_buffer(m_ports[index], frames));
        std::size_t available = frames;
        if (samples != nullptr) {
            ++delivered;
        } else if (m_absence == Absence::silence) {
            samples = m_silence.data();
            available = std::min<std::size_t>(frames, m_silence.size());
        }
        m_buffers[m_channels[index]] = {
            .samples = samples, .bytes = samples == nullptr ? 0 : static_cast<std::int64_t>(available * sizeof(float))};
    }
    return delivered;
}

}  // namespace vantiro
