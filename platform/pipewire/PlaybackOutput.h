// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/Playback.h"
#include "platform/pipewire/GraphMirror.h"

#include <pipewire/stream.h>

#include <atomic>
#include <expected>
#include <memory>
#include <string>

namespace vantiro {

/// What is played as a stream of our own, with PipeWire's converter for the rate and the channels of the device; the
/// session manager links it. It asks neither for a rate of the graph nor for a device's, since a take may need another.
class PlaybackOutput final : public PlaybackStream, private GraphMirror::Observer {
public:
    /// `target` is a node's name, also of one that is still to come, or its serial; empty for the default output. The
    /// failure is a positive errno.
    [[nodiscard]] static std::expected<std::unique_ptr<PlaybackStream>, int> open(
        std::shared_ptr<GraphMirror> mirror, const Request& request, const std::string& target, PlaybackSource& source);

    ~PlaybackOutput() override;

    [[nodiscard]] bool isAlive() const override { return m_alive.load(std::memory_order_relaxed); }
    /// The stream goes on for a moment after it was made inactive, since what its converter holds would be lost.
    void setActive(bool active) override;

private:
    PlaybackOutput(std::shared_ptr<GraphMirror> mirror, std::size_t channels, PlaybackSource& source);

    [[nodiscard]] int connect(const Request& request, const std::string& target);
    void destroyStream();
    void setTimer(long nanoseconds);

    void graphChanged(const GraphSnapshot& /*graph*/) override { }
    void connectionLost() override;

    void process() noexcept;

    std::shared_ptr<GraphMirror> m_mirror;
    std::size_t m_channels;
    PlaybackSource& m_source;

    // PipeWire's thread or its lock; the audio thread too, as long as there is a stream.
    pw_stream* m_stream = nullptr;
    spa_hook m_streamHook{};
    spa_source* m_timer = nullptr;

    std::atomic<bool> m_alive{true};
};

}  // namespace vantiro
