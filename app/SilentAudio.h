// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"

#include <cerrno>

namespace vantiro {

/// A machine without audio, for a model that is a picture. Any thread.
class SilentAudio final : public AudioPlatform {
public:
    [[nodiscard]] bool isAvailable() override { return false; }
    [[nodiscard]] std::vector<AudioDevice> devices() override { return {}; }
    [[nodiscard]] std::optional<AudioDevice> device(const QString& /*uid*/) override { return std::nullopt; }
    [[nodiscard]] std::optional<QString> defaultInputUID() override { return std::nullopt; }
    [[nodiscard]] std::vector<std::int64_t> inputBuffers(const QString& /*uid*/) override { return {}; }
    [[nodiscard]] std::optional<TakeRate> takeRate(const QString& /*uid*/) override { return std::nullopt; }
    [[nodiscard]] std::expected<std::unique_ptr<CaptureStream>, int> openCapture(
        const QString& /*uid*/, std::span<const std::int64_t> /*channels*/, CapturePurpose /*purpose*/) override
    {
        return std::unexpected(ENODEV);
    }
    [[nodiscard]] std::vector<AudioProcess> processes() override { return {}; }
    [[nodiscard]] std::vector<AudioDevice> outputDevices(const AudioProcess& /*process*/) override { return {}; }
    [[nodiscard]] std::expected<std::unique_ptr<AudioTap>, int> openTap(
        const AudioProcess& /*process*/, const AudioTap::Request& /*request*/) override
    {
        return std::unexpected(ENODEV);
    }
    [[nodiscard]] std::expected<std::unique_ptr<PlaybackStream>, int> openPlayback(
        const PlaybackStream::Request& /*request*/, PlaybackSource& /*source*/) override
    {
        return std::unexpected(ENODEV);
    }
    [[nodiscard]] std::unique_ptr<HardwareWatch> watch(std::function<void()> /*onChange*/) override { return nullptr; }
};

}  // namespace vantiro
