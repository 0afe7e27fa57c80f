// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "platform/pipewire/ProgramIdentity.h"

#include <QHash>

#include <memory>
#include <mutex>
#include <optional>

namespace vantiro {

/// The taps that are open now, by their UIDs. A tap itself is only a name: what it wants of the graph is linked while a
/// capture is open on it. Any thread.
class TapRegister : public std::enable_shared_from_this<TapRegister> {
public:
    struct Tap {
        ProgramIdentity program;
        AudioDevice device;
    };

    /// Leaves the register when it is destroyed.
    [[nodiscard]] std::unique_ptr<AudioTap> add(const Tap& tap);
    [[nodiscard]] std::optional<Tap> find(const QString& uid);

private:
    class Entry;

    std::mutex m_mutex;
    QHash<QString, Tap> m_taps;
};

}  // namespace vantiro
