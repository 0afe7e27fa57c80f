// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/playback/PlaybackFeed.h"
#include "core/playback/PlaybackQueue.h"
#include "core/takes/TakeReader.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace vantiro {

/// What a player shares with the thread that reads for it: neither waits for the other's end.
struct PlaybackShare {
    /// What the reading thread is to do.
    struct Orders {
        std::uint64_t generation = 1;  ///< Each seek is a later one.
        std::int64_t start = 0;        ///< The frame that this generation begins with.
        bool isPlaying = false;        ///< The queue is emptied, so it is looked after.
        bool isOver = false;

        bool operator==(const Orders&) const = default;
    };

    explicit PlaybackShare(const TakeReader::Format& format);

    /// Changes the orders and wakes the reading thread.
    void order(const Orders& orders);

    PlaybackQueue queue;
    PlaybackFeed feed;
    std::atomic<std::int64_t> frames;                ///< Of the file; what was read counts before what its header says.
    std::atomic<std::uint64_t> failedGeneration{0};  ///< The one that the disk ended.

    std::mutex mutex;
    std::condition_variable ordered;
    Orders orders;  ///< Under the mutex.
};

/// Reads a file into the queue. One thread at a time.
class ReadAhead {
public:
    ReadAhead(std::unique_ptr<TakeReader> reader, std::shared_ptr<PlaybackShare> share);

    /// Reads the next stretch, as far as there is room; the failure is the disk's. Nothing was read at the end.
    [[nodiscard]] Result<std::size_t> readOne();
    /// Does what it is ordered until all is over, on a thread of its own.
    static void start(ReadAhead reading);

private:
    enum class State {
        reading,
        heldUp,  ///< The queue is full of what will be dropped.
        full,
        atEnd,
    };

    [[nodiscard]] State follow(const PlaybackShare::Orders& orders);
    void run();

    std::unique_ptr<TakeReader> m_reader;
    std::shared_ptr<PlaybackShare> m_share;
    std::vector<float> m_samples;
    std::vector<float*> m_planes;
    std::uint64_t m_generation = 1;
    std::int64_t m_next = 0;  ///< The frame to read.
    bool m_atEnd = false;
};

}  // namespace vantiro
