// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/PieceQueue.h"

#include <utility>

namespace vantiro {

PieceQueue::PieceQueue(std::int64_t count, int threads, Make make)
    : m_count(count)
    , m_ahead(threads + 1)
    , m_make(std::move(make))
{
    for (int thread = 0; thread < threads; ++thread) {
        m_threads.emplace_back([this](const std::stop_token& stop) { work(stop); });
    }
}

PieceQueue::~PieceQueue()
{
    for (std::jthread& thread : m_threads) {
        thread.request_stop();
    }
    m_threads.clear();
}

std::optional<Result<CopyPiece>> PieceQueue::next(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, limit, [this] { return m_ready.contains(m_delivered); })) {
        return std::nullopt;
    }
    auto piece = std::move(m_ready.extract(m_delivered).mapped());
    ++m_delivered;
    m_changed.notify_all();
    return piece;
}

void PieceQueue::work(const std::stop_token& stop)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        const bool isFree =
            m_changed.wait(lock, stop, [this] { return m_started == m_count || m_started < m_delivered + m_ahead; });
        if (!isFree || stop.stop_requested() || m_started == m_count) {
            return;
        }
        const std::int64_t number = m_started++;
        lock.unlock();
        auto piece = m_make(number, stop);
        lock.lock();
        m_ready.emplace(number, std::move(piece));
        m_changed.notify_all();
    }
}

}  // namespace vantiro
