// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/ReadAhead.h"

#include "core/foundation/Log.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr std::size_t framesPerSlot = 4096;
    /// Seconds that are read ahead.
    constexpr double secondsAhead = 1;
    constexpr std::size_t fewestSlots = 4;
    /// Samples; with many channels at a high rate less is read ahead.
    constexpr std::size_t mostSamples = std::size_t{4} << 20U;
    /// What an output takes. Channels behind these are not played.
    constexpr std::size_t mostChannels = 64;
    /// An output has a buffer of its own, so the end of a file is heard some time after it was handed out.
    constexpr double secondsAfterEnd = 0.1;
    /// Between two looks at a queue that is about to have room.
    constexpr auto shortPause = 5ms;

    std::size_t playedChannels(const TakeReader::Format& format)
    {
        return std::min(static_cast<std::size_t>(format.channels), mostChannels);
    }

    std::size_t slotsFor(const TakeReader::Format& format)
    {
        const auto wanted = static_cast<std::size_t>(std::ceil(format.sampleRate * secondsAhead / framesPerSlot));
        return std::max(fewestSlots, std::min(wanted, mostSamples / (framesPerSlot * playedChannels(format))));
    }

}  // namespace

PlaybackShare::PlaybackShare(const TakeReader::Format& format)
    : queue(playedChannels(format), framesPerSlot, slotsFor(format))
    , feed(queue, static_cast<std::size_t>(std::ceil(format.sampleRate * secondsAfterEnd)))
    , frames(format.frames)
{
    feed.setGeneration(orders.generation);
}

void PlaybackShare::order(const Orders& newOrders)
{
    {
        const std::scoped_lock lock(mutex);
        orders = newOrders;
    }
    ordered.notify_one();
}

ReadAhead::ReadAhead(std::unique_ptr<TakeReader> reader, std::shared_ptr<PlaybackShare> share)
    : m_reader(std::move(reader))
    , m_share(std::move(share))
    , m_samples(static_cast<std::size_t>(m_reader->format().channels) * framesPerSlot)
{
    for (std::size_t first = 0; first < m_samples.size(); first += framesPerSlot) {
        m_planes.push_back(m_samples.data() + first);
    }
}

Result<std::size_t> ReadAhead::readOne()
{
    const std::span<float> slot = m_share->queue.nextSlot();
    if (slot.empty()) {
        return 0;
    }
    const auto got = m_reader->read(m_next, m_planes, framesPerSlot);
    const auto frames = static_cast<std::size_t>(got.value_or(0));
    // What is no number could hurt ears and speakers.
    const std::size_t channels = m_share->queue.channels();
    for (std::size_t channel = 0; channel < channels; ++channel) {
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const float sample = m_planes[channel][frame];
            slot[frame * channels + channel] = std::isfinite(sample) ? sample : 0;
        }
    }
    m_atEnd = frames < framesPerSlot;
    // Before the end is told, so that whoever sees the end knows why.
    if (!got) {
        m_share->failedGeneration.store(m_generation, std::memory_order_relaxed);
    }
    m_share->queue.push({.generation = m_generation, .first = m_next, .frames = frames, .isEnd = m_atEnd});
    m_next += static_cast<std::int64_t>(frames);
    // A header that only estimates can say too much or too little. Where nothing was read, the end is unknown.
    const std::int64_t known = m_share->frames.load(std::memory_order_relaxed);
    if (m_next > known || (m_atEnd && frames > 0)) {
        m_share->frames.store(m_next, std::memory_order_relaxed);
    }
    if (!got) {
        return std::unexpected(got.error());
    }
    return frames;
}

ReadAhead::State ReadAhead::follow(const PlaybackShare::Orders& orders)
{
    if (orders.generation != m_generation) {
        m_generation = orders.generation;
        m_next = orders.start;
        m_atEnd = false;
    }
    if (m_atEnd) {
        return State::atEnd;
    }
    if (m_share->queue.nextSlot().empty()) {
        return m_share->queue.beginsWithOther(m_generation) ? State::heldUp : State::full;
    }
    // A failure ends what is played, as the end of the file does.
    if (const auto read = readOne(); !read) {
        logLine(errorText(read.error()));
    }
    return State::reading;
}

void ReadAhead::run()
{
    const double capacity = static_cast<double>(m_share->queue.slots() * framesPerSlot);
    const std::chrono::duration<double> longPause(capacity / m_reader->format().sampleRate / 4);
    // An output that takes all at once, as after a hang, may do so again.
    bool ranDry = false;
    std::unique_lock lock(m_share->mutex);
    while (!m_share->orders.isOver) {
        const PlaybackShare::Orders orders = m_share->orders;
        lock.unlock();
        const State state = follow(orders);
        lock.lock();
        const auto isOtherwise = [&] { return m_share->orders != orders; };
        if (state == State::reading) {
            continue;
        }
        if (state == State::atEnd || !orders.isPlaying) {
            m_share->ordered.wait(lock, isOtherwise);
        } else {
            const bool isSoon = state == State::heldUp || ranDry;
            m_share->ordered.wait_for(lock, isSoon ? shortPause : longPause, isOtherwise);
            ranDry = m_share->queue.isEmpty();
        }
    }
}

void ReadAhead::start(ReadAhead reading)
{
    // A disk that hangs is waited for here and nowhere else, also when the file is closed.
    std::thread([own = std::move(reading)]() mutable { own.run(); }).detach();
}

}  // namespace vantiro
