// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/PlaybackOutput.h"

#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <span>

namespace vantiro {

namespace {

    /// Begins with captureNodePrefix, so that it is never offered as a source nor counts as somebody's use of a device.
    constexpr const char* nodeName = "vantiro-player";
    /// Far more than an ear notices and far less than a user: enough for whatever converters and devices hold.
    constexpr long restNanoseconds = 250'000'000;

    /// The first two channels are left and right, whatever comes behind them: a take's pair stands first, and a
    /// converter passes channels of no position over where the device has none of them.
    spa_audio_info_raw audioFormat(const PlaybackStream::Request& request)
    {
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = static_cast<std::uint32_t>(std::lround(request.sampleRate));
        format.channels = static_cast<std::uint32_t>(request.channels);
        if (request.channels == 1) {
            format.position[0] = SPA_AUDIO_CHANNEL_MONO;
            return format;
        }
        format.position[0] = SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        for (std::uint32_t channel = 2; channel < format.channels; ++channel) {
            format.position[channel] = SPA_AUDIO_CHANNEL_AUX0 + channel;
        }
        return format;
    }

}  // namespace

std::expected<std::unique_ptr<PlaybackStream>, int> PlaybackOutput::open(
    std::shared_ptr<GraphMirror> mirror, const Request& request, const std::string& target, PlaybackSource& source)
{
    if (request.channels < 1 || request.channels > static_cast<int>(SPA_AUDIO_MAX_CHANNELS)
        || mirror->loop() == nullptr) {
        return std::unexpected(EINVAL);
    }
    std::unique_ptr<PlaybackOutput> output(
        new PlaybackOutput(std::move(mirror), static_cast<std::size_t>(request.channels), source));
    if (const int status = output->connect(request, target); status != 0) {
        return std::unexpected(status);
    }
    return output;
}

PlaybackOutput::PlaybackOutput(std::shared_ptr<GraphMirror> mirror, std::size_t channels, PlaybackSource& source)
    : m_mirror(std::move(mirror))
    , m_channels(channels)
    , m_source(source)
{ }

PlaybackOutput::~PlaybackOutput()
{
    const LoopLock lock(m_mirror->loop());
    m_mirror->remove(*this);
    if (m_timer != nullptr) {
        pw_loop_destroy_source(pw_thread_loop_get_loop(m_mirror->loop()), m_timer);
    }
    destroyStream();
}

int PlaybackOutput::connect(const Request& request, const std::string& target)
{
    const LoopLock lock(m_mirror->loop());
    if (m_mirror->core() == nullptr) {
        return ENODEV;
    }
    // A session manager remembers volume, mute and place of a stream by its role, if it has one, and otherwise by its
    // program: ours share nothing with other players. Where a stream asks for a place, if only for the default one
    // (-1), what is remembered of it does not count: the user chooses that at our own key.
    pw_properties* properties =
        pw_properties_new(PW_KEY_NODE_NAME, nodeName, PW_KEY_NODE_DESCRIPTION, "Vantiro", PW_KEY_APP_NAME, "Vantiro",
            PW_KEY_MEDIA_NAME, "Vantiro", PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
            PW_KEY_NODE_LATENCY, "1024/48000", PW_KEY_TARGET_OBJECT, target.empty() ? "-1" : target.c_str(), nullptr);
    m_stream = pw_stream_new(m_mirror->core(), nodeName, properties);
    if (m_stream == nullptr) {
        return errno;
    }
    static const pw_stream_events events = [] {
        pw_stream_events table{};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = [](void* data, pw_stream_state, pw_stream_state state, const char*) {
            if (state == PW_STREAM_STATE_ERROR) {
                static_cast<PlaybackOutput*>(data)->m_alive.store(false, std::memory_order_relaxed);
            }
        };
        table.process = [](void* data) { static_cast<PlaybackOutput*>(data)->process(); };
        return table;
    }();
    pw_stream_add_listener(m_stream, &m_streamHook, &events, this);

    std::array<std::uint8_t, 2048> bytes;
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, bytes.data(), bytes.size());
    spa_audio_info_raw format = audioFormat(request);
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    const auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    if (const int result = pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1);
        result < 0) {
        return -result;
    }
    m_timer = pw_loop_add_timer(
        pw_thread_loop_get_loop(m_mirror->loop()),
        [](void* data, std::uint64_t) {
            if (pw_stream* stream = static_cast<PlaybackOutput*>(data)->m_stream; stream != nullptr) {
                pw_stream_set_active(stream, false);
            }
        },
        this);
    m_mirror->add(*this);
    return 0;
}

void PlaybackOutput::destroyStream()
{
    if (m_stream != nullptr) {
        spa_hook_remove(&m_streamHook);
        pw_stream_destroy(m_stream);
        m_stream = nullptr;
    }
}

void PlaybackOutput::setActive(bool active)
{
    const LoopLock lock(m_mirror->loop());
    if (m_stream == nullptr) {
        return;
    }
    // A timer of 0 is none.
    setTimer(active ? 0 : restNanoseconds);
    if (active) {
        pw_stream_set_active(m_stream, true);
    }
}

void PlaybackOutput::setTimer(long nanoseconds)
{
    timespec delay{.tv_sec = 0, .tv_nsec = nanoseconds};
    pw_loop_update_timer(pw_thread_loop_get_loop(m_mirror->loop()), m_timer, &delay, nullptr, false);
}

void PlaybackOutput::connectionLost()
{
    destroyStream();
    m_alive.store(false, std::memory_order_relaxed);
}

// RT safe.
void PlaybackOutput::process() noexcept
{
    pw_buffer* buffer = pw_stream_dequeue_buffer(m_stream);
    if (buffer == nullptr) {
        return;
    }
    spa_data& data = buffer->buffer->datas[0];
    const std::size_t stride = m_channels * sizeof(float);
    std::size_t frames = data.data == nullptr ? 0 : data.maxsize / stride;
    if (buffer->requested > 0) {
        frames = std::min(frames, static_cast<std::size_t>(buffer->requested));
    }
    if (frames > 0) {
        m_source.fill(std::span(static_cast<float*>(data.data), frames * m_channels));
    }
    data.chunk->offset = 0;
    data.chunk->stride = static_cast<std::int32_t>(stride);
    data.chunk->size = static_cast<std::uint32_t>(frames * stride);
    pw_stream_queue_buffer(m_stream, buffer);
}

}  // namespace vantiro
