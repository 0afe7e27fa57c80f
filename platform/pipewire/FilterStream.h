// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "platform/pipewire/GraphClock.h"
#include "platform/pipewire/GraphMirror.h"
#include "platform/pipewire/LinkPlan.h"
#include "platform/pipewire/LinkSet.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantiro {

/// A capture as a filter node of our own: one mono float port a wanted channel, linked by ourselves port to port, with
/// nothing of a session manager, a volume or a converter in between, so that what a source sends arrives bit for bit.
class FilterStream final : public CaptureStream, private GraphMirror::Observer {
public:
    /// What a cycle without a buffer means.
    enum class Absence {
        missing,  ///< The source failed to deliver.
        silence,  ///< The source is quiet: time goes on, whether it is linked or not.
    };

    struct Options {
        std::string nodeName;               ///< Begins with captureNodePrefix.
        std::size_t sourceChannels = 0;     ///< Buffers of each block.
        std::vector<std::size_t> channels;  ///< Those that are wanted, counted from 0.
        double nominalRate = 0;             ///< Hz; counts if no cycle comes in time.
        std::optional<int> forcedRate;      ///< Hz that the graph is asked to run at while we capture.
        Absence absence = Absence::missing;
    };

    /// Makes the node, links it, and waits for the first cycle. The failure is a positive errno.
    [[nodiscard]] static std::expected<std::unique_ptr<CaptureStream>, int> open(
        std::shared_ptr<GraphMirror> mirror, std::unique_ptr<LinkPlan> plan, const Options& options);

    ~FilterStream() override;

    [[nodiscard]] double sampleRate() const override { return m_sampleRate; }
    [[nodiscard]] double currentRate() const override;
    [[nodiscard]] bool isAlive() const override { return m_alive.load(std::memory_order_relaxed); }
    [[nodiscard]] int start(AudioBlockHandler& handler, Listener listener) override;
    void stop() override;
    [[nodiscard]] QString schedulingNote() const override;

private:
    FilterStream(std::shared_ptr<GraphMirror> mirror, std::unique_ptr<LinkPlan> plan, const Options& options);

    [[nodiscard]] int connect(const Options& options);
    void waitForFirstCycle(std::optional<int> forcedRate);
    void destroyFilter();

    void graphChanged(const GraphSnapshot& graph) override;
    void connectionLost() override;
    [[nodiscard]] std::vector<PortPair> wantedLinks(const GraphSnapshot& graph) const;
    void setAlive(bool alive);
    void lookAgain();
    void holdLinks(const GraphSnapshot& graph);

    void process(const spa_io_position& position) noexcept;
    [[nodiscard]] std::size_t collect(std::uint32_t frames) noexcept;

    std::shared_ptr<GraphMirror> m_mirror;
    std::unique_ptr<LinkPlan> m_plan;
    double m_sampleRate = 0;
    std::vector<std::size_t> m_channels;
    Absence m_absence;

    // PipeWire's thread or its lock.
    pw_filter* m_filter = nullptr;
    spa_hook m_filterHook{};
    spa_source* m_timer = nullptr;
    LinkSet m_links;
    Listener m_listener;
    bool m_rateReported = false;

    // Between the threads.
    std::atomic<bool> m_alive{true};
    std::atomic<AudioBlockHandler*> m_handler{nullptr};
    std::atomic<std::uint32_t> m_rate{0};  ///< Hz of the latest cycle.
    std::atomic<bool> m_complete{false};   ///< A cycle had a buffer at every port.
    std::atomic<std::uint32_t> m_linkChanges{0};
    std::atomic<bool> m_linked{false};  ///< Links are held, so buffers are due.

    // The audio thread, and others only while no audio runs.
    std::vector<void*> m_ports;
    std::vector<AudioBuffer> m_buffers;
    std::vector<float> m_silence;  ///< Stands for the buffers of a quiet source.
    GraphClock m_clock;
    std::uint32_t m_declaredRate = 0;
    bool m_begun = false;
    std::uint32_t m_seenLinkChanges = 0;
    int m_cyclesSinceLinkChange = 0;
};

}  // namespace vantiro
