// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/takes/ExportFormat.h"
#include "core/takes/TakeReader.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace vantiro {

/// Whether there is room for a copy. A take outranks it: a copy leaves free what a take may need. Any thread.
namespace CopyRoom {

    /// The volume that a copy would lie on.
    struct Volume {
        std::optional<std::int64_t> freeBytes = std::nullopt;           ///< Absent if it does not tell.
        std::optional<std::int64_t> takeBytesPerSecond = std::nullopt;  ///< Of a take that is recorded to it now.

        bool operator==(const Volume&) const = default;
    };

    /// The most bytes that a copy is taken to need: those of 24-bit PCM, for AAC 32000 a second.
    [[nodiscard]] std::int64_t bytes(ExportFormat format, const TakeReader::Format& take);

    /// What a copy has to leave free: room for 4 hours of the take that runs, else 1 GiB.
    [[nodiscard]] std::int64_t reserve(const Volume& volume);

    /// A copy may write this many bytes more. A volume that does not tell its room counts as large.
    [[nodiscard]] bool fits(std::int64_t bytes, const Volume& volume);

    /// The volume as it is now, for a copy with this path. May wait for a slow disk.
    [[nodiscard]] Volume volumeFor(const QString& destination);

    /// What the makers of copies ask of the world.
    struct Surroundings {
        std::function<Volume(const QString& destination)> volume = volumeFor;
        std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    };

}  // namespace CopyRoom

/// Looks again, every five seconds, whether the room that a copy has to leave is still there. One thread at a time.
class CopyRoomWatch {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    static constexpr std::chrono::seconds interval{5};

    CopyRoomWatch(std::function<CopyRoom::Volume()> volume, Clock now);

    /// The copy has to give up. Looks at the volume only when it is time to; stays true.
    [[nodiscard]] bool isShort();

private:
    std::function<CopyRoom::Volume()> m_volume;
    Clock m_now;
    std::chrono::steady_clock::time_point m_next;
    bool m_isShort = false;
};

}  // namespace vantiro
