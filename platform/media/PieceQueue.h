// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "platform/media/PacketRun.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace vantiro {

/// A stretch of a copy.
struct CopyPiece {
    PacketRun packets;
    std::vector<std::byte> packed = {};  ///< Its samples, for whoever asked for them.
};

/// Makes the pieces of a copy on several threads and gives them out in their order. Few are made ahead of the one that
/// is asked for, so memory does not grow with the take. Its owner's thread only.
class PieceQueue {
public:
    /// Makes the piece of a number; gives up, with whatever it has, when the token says so. On several threads at once.
    using Make = std::function<Result<CopyPiece>(std::int64_t number, const std::stop_token& stop)>;

    PieceQueue(std::int64_t count, int threads, Make make);
    /// Gives up the pieces that are being made, and waits for that.
    ~PieceQueue();

    PieceQueue(const PieceQueue&) = delete;
    PieceQueue& operator=(const PieceQueue&) = delete;

    /// The next piece, nothing if it is not there in time. Not called again after the last one.
    [[nodiscard]] std::optional<Result<CopyPiece>> next(std::chrono::milliseconds limit);

private:
    void work(const std::stop_token& stop);

    std::int64_t m_count;
    std::int64_t m_ahead;
    Make m_make;
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::int64_t m_started = 0;  ///< Guarded by m_mutex, as the next two.
    std::int64_t m_delivered = 0;
    std::map<std::int64_t, Result<CopyPiece>> m_ready;
    std::vector<std::jthread> m_threads;
};

}  // namespace vantiro
