// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/TakePlayer.h"

#include "core/playback/ReadAhead.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace vantiro {

struct TakePlayer::Private {
    Private(AudioPlatform& platform, const TakeReader::Format& format)
        : audio(platform)
        , share(std::make_shared<PlaybackShare>(format))
        , sampleRate(format.sampleRate)
    { }

    void connect(const QString& output)
    {
        stream.reset();
        auto opened = audio.openPlayback(
            {.sampleRate = sampleRate, .channels = static_cast<int>(share->queue.channels()), .output = output},
            share->feed);
        if (opened) {
            stream = *std::move(opened);
            stream->setActive(orders.isPlaying);
        }
    }

    AudioPlatform& audio;
    std::shared_ptr<PlaybackShare> share;
    double sampleRate;
    PlaybackShare::Orders orders;
    std::unique_ptr<PlaybackStream> stream;  ///< Uses the feed. Null if none could be opened.
};

Result<std::unique_ptr<TakePlayer>> TakePlayer::open(const QString& path, AudioPlatform& audio, const QString& output)
{
    auto reader = TakeReader::open(path);
    if (!reader) {
        return std::unexpected(std::move(reader.error()));
    }
    auto data = std::make_unique<Private>(audio, (*reader)->format());
    ReadAhead reading(*std::move(reader), data->share);
    const auto beginning = reading.readOne();
    if (!beginning) {
        return std::unexpected(beginning.error());
    }
    if (*beginning == 0) {
        return captureFailure(QStringLiteral("%1 holds no audio.").arg(QFileInfo(path).fileName()));
    }
    ReadAhead::start(std::move(reading));
    data->connect(output);
    return std::unique_ptr<TakePlayer>(new TakePlayer(std::move(data)));
}

TakePlayer::TakePlayer(std::unique_ptr<Private> data) : m_data(std::move(data)) { }

TakePlayer::~TakePlayer()
{
    m_data->stream.reset();
    m_data->orders.isOver = true;
    m_data->share->order(m_data->orders);
}

double TakePlayer::duration() const
{
    return static_cast<double>(m_data->share->frames.load(std::memory_order_relaxed)) / m_data->sampleRate;
}

double TakePlayer::currentTime() const
{
    const PlaybackShare::Orders& orders = m_data->orders;
    const std::int64_t frame = m_data->share->feed.position(orders.generation).value_or(orders.start);
    return static_cast<double>(frame) / m_data->sampleRate;
}

void TakePlayer::seek(double seconds)
{
    const double held = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, duration());
    ++m_data->orders.generation;
    m_data->orders.start = std::llround(held * m_data->sampleRate);
    // First nothing old is handed out, then something new is read.
    m_data->share->feed.setGeneration(m_data->orders.generation);
    m_data->share->order(m_data->orders);
}

void TakePlayer::play()
{
    m_data->orders.isPlaying = true;
    m_data->share->feed.setHeld(false);
    m_data->share->order(m_data->orders);
    if (m_data->stream) {
        m_data->stream->setActive(true);
    }
}

void TakePlayer::pause()
{
    m_data->orders.isPlaying = false;
    // What an output still asks for until it rests is silence, so nothing is lost in it.
    m_data->share->feed.setHeld(true);
    m_data->share->order(m_data->orders);
    if (m_data->stream) {
        m_data->stream->setActive(false);
    }
}

bool TakePlayer::hasEnded() const
{
    return m_data->share->feed.hasEnded(m_data->orders.generation);
}

bool TakePlayer::hasFailed() const
{
    return hasEnded() && m_data->share->failedGeneration.load(std::memory_order_relaxed) == m_data->orders.generation;
}

std::pair<float, float> TakePlayer::takePeaks()
{
    return m_data->share->feed.takePeaks();
}

std::uint64_t TakePlayer::cycles() const
{
    return m_data->share->feed.cycles();
}

bool TakePlayer::isConnected() const
{
    return m_data->stream && m_data->stream->isAlive();
}

void TakePlayer::reconnect(const QString& output)
{
    m_data->connect(output);
}

}  // namespace vantiro
