// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/Playback.h"

#include <memory>
#include <mutex>
#include <vector>

namespace vantiro::test {

/// An output of the fake platform: the test is its clock. Any thread.
class FakeOutput {
public:
    /// The stream that is handed out for it.
    [[nodiscard]] static std::unique_ptr<PlaybackStream> openStream(
        std::shared_ptr<FakeOutput> output, PlaybackSource& source);

    explicit FakeOutput(PlaybackStream::Request request) : m_request(std::move(request)) { }

    /// What it was opened for.
    [[nodiscard]] const PlaybackStream::Request& request() const { return m_request; }
    /// The stream was not destroyed yet.
    [[nodiscard]] bool isOpen() const;
    [[nodiscard]] bool isActive() const;
    /// Asks for that many frames, and returns what was handed out; nothing, without asking, if it is not open, not
    /// active or gone.
    std::vector<float> pump(int frames);
    /// The audio service lets go of it for good.
    void vanish();

private:
    struct Stream;

    PlaybackStream::Request m_request;
    mutable std::mutex m_mutex;
    PlaybackSource* m_source = nullptr;  ///< Null while it is not open.
    bool m_active = true;
    bool m_alive = true;
};

}  // namespace vantiro::test
