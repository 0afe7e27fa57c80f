// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"

#include <memory>

namespace vantiro {

class GraphMirror;
class ProgramList;
class TapRegister;

/// The machine's audio by way of PipeWire.
class PipeWireAudio final : public AudioPlatform {
public:
    /// See GraphMirror.
    explicit PipeWireAudio(bool asksForRealTime = true);
    ~PipeWireAudio() override;

    [[nodiscard]] bool isAvailable() override;
    [[nodiscard]] std::vector<AudioDevice> devices() override;
    [[nodiscard]] std::optional<AudioDevice> device(const QString& uid) override;
    [[nodiscard]] std::optional<QString> defaultInputUID() override;
    [[nodiscard]] std::vector<std::int64_t> inputBuffers(const QString& uid) override;
    [[nodiscard]] std::optional<TakeRate> takeRate(const QString& uid) override;
    [[nodiscard]] std::expected<std::unique_ptr<CaptureStream>, int> openCapture(
        const QString& uid, std::span<const std::int64_t> channels, CapturePurpose purpose) override;
    [[nodiscard]] std::vector<AudioProcess> processes() override;
    [[nodiscard]] std::vector<AudioDevice> outputDevices(const AudioProcess& process) override;
    [[nodiscard]] std::expected<std::unique_ptr<AudioTap>, int> openTap(
        const AudioProcess& process, const AudioTap::Request& request) override;
    [[nodiscard]] std::expected<std::unique_ptr<PlaybackStream>, int> openPlayback(
        const PlaybackStream::Request& request, PlaybackSource& source) override;
    [[nodiscard]] std::unique_ptr<HardwareWatch> watch(std::function<void()> onChange) override;

private:
    std::shared_ptr<GraphMirror> m_mirror;
    std::shared_ptr<ProgramList> m_programs;
    std::shared_ptr<TapRegister> m_taps;
};

}  // namespace vantiro
