// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Scheduler.h"
#include "core/platform/AudioPermission.h"
#include "core/platform/AudioPlatform.h"
#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderState.h"
#include "core/sources/SourceProbe.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace vantiro {

/// The recorder as the model uses it.
struct RecorderServices {
    /// The running take; looks at a small file and a lock.
    std::function<std::optional<RecorderState>()> running;
    /// The final record of the take that ended last.
    std::function<std::optional<RecorderState>()> last;
    /// Both block and are called on threads of their own.
    std::function<Result<RecorderState>(const RecorderClient::Request&)> start;
    std::function<Result<std::optional<RecorderState>>(std::chrono::milliseconds timeout)> stop;

    /// The real one.
    [[nodiscard]] static RecorderServices real();
};

/// What the flows need of the world. Whatever is named by reference outlives them.
struct ModelServices {
    AudioPlatform& audio;
    std::shared_ptr<AudioPermission> permission;  ///< Shared with a question that nobody has answered yet.
    Scheduler& scheduler;
    RecorderServices recorder = RecorderServices::real();
    std::function<void(const QString& path)> reveal = {};  ///< Selects a file in the file manager; may be empty.
    std::chrono::milliseconds listenFor = SourceProbe::usualTime;  ///< How long all inputs are heard.
};

}  // namespace vantiro
