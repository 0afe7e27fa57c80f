// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/FakeAudio.h"

#include "core/capture/ProcessTap.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <numeric>

namespace vantiro::test {

namespace {

    constexpr std::int64_t framesAtStart = 480;

    // One for all, so that no order of locks can go wrong, and recursive, since a listener may stop its own stream.
    std::recursive_mutex theMutex;

    [[nodiscard]] std::unique_lock<std::recursive_mutex> locked()
    {
        return std::unique_lock(theMutex);
    }

}  // namespace

struct FakeSource::Stream final : CaptureStream {
    Stream(std::shared_ptr<FakeSource> from, std::span<const std::int64_t> channels)
        : source(std::move(from))
        , rate(source->m_rate)
    {
        std::int64_t first = 1;
        for (const std::int64_t count : source->m_buffers) {
            isWanted.push_back(std::ranges::any_of(
                channels, [&](std::int64_t channel) { return channel >= first && channel < first + count; }));
            first += count;
        }
        source->m_streams.push_back(this);
        ++source->timesOpened;
    }
    ~Stream() override
    {
        const auto lock = locked();
        std::erase(source->m_streams, this);
    }

    double sampleRate() const override { return rate; }
    double currentRate() const override { return source->m_rate; }
    bool isAlive() const override { return source->m_alive; }
    QString schedulingNote() const override { return {}; }

    int start(AudioBlockHandler& newHandler, Listener newListener) override
    {
        const auto lock = locked();
        const int status = source->startStatus.exchange(0);
        if (status == 0) {
            handler = &newHandler;
            listener = std::move(newListener);
        }
        if (const float sample = source->sampleAtStart; status == 0 && sample != 0) {
            source->deliver(framesAtStart, sample);
        }
        return status;
    }
    void stop() override
    {
        const auto lock = locked();
        handler = nullptr;
        listener = {};
    }

    std::shared_ptr<FakeSource> source;
    double rate;
    std::vector<bool> isWanted;  ///< For each buffer.
    AudioBlockHandler* handler = nullptr;
    Listener listener;
};

FakeSource::FakeSource(AudioDevice record, std::vector<std::int64_t> buffers)
    : m_record(std::move(record))
    , m_buffers(std::move(buffers))
    , m_rate(m_record.sampleRate)
{
    m_record.inputChannels = std::accumulate(m_buffers.begin(), m_buffers.end(), std::int64_t{0});
}

void FakeSource::deliver(const std::vector<std::vector<float>>& channels)
{
    const auto lock = locked();
    std::vector<std::vector<float>> data;
    auto channel = channels.begin();
    for (const std::int64_t count : m_buffers) {
        std::vector<float>& samples = data.emplace_back();
        for (std::size_t frame = 0; frame < channel->size(); ++frame) {
            std::for_each(channel, channel + count, [&](const auto& one) { samples.push_back(one[frame]); });
        }
        channel += count;
    }
    for (const Stream* stream : m_streams) {
        std::vector<AudioBuffer> buffers(data.size());
        for (std::size_t index = 0; index < data.size(); ++index) {
            if (stream->isWanted[index]) {
                buffers[index] = {data[index].data(), static_cast<std::int64_t>(data[index].size() * sizeof(float))};
            }
        }
        if (stream->handler != nullptr) {
            stream->handler->process({.buffers = buffers,
                .sampleTime = static_cast<double>(m_sampleTime),
                .hostNanoseconds = static_cast<std::uint64_t>(m_hostSeconds * 1e9)});
        }
    }
    skip(static_cast<std::int64_t>(channels.front().size()));
}

void FakeSource::deliver(std::int64_t frames, float sample)
{
    deliver(std::vector(static_cast<std::size_t>(m_record.inputChannels),
        std::vector<float>(static_cast<std::size_t>(frames), sample)));
}

void FakeSource::skip(std::int64_t frames)
{
    const auto lock = locked();
    m_sampleTime += frames;
    m_hostSeconds += m_rate > 0 ? static_cast<double>(frames) / m_rate : 0;
}

void FakeSource::setRate(double rate)
{
    const auto lock = locked();
    m_rate = rate;
    m_record.sampleRate = rate;
    tell(&CaptureStream::Listener::rateChanged);
}

void FakeSource::disconnect()
{
    const auto lock = locked();
    m_alive = false;
    tell(&CaptureStream::Listener::aliveChanged);
}

void FakeSource::tell(std::function<void()> CaptureStream::Listener::* event)
{
    // Copies, since a listener may take itself and its stream away.
    for (const Stream* stream : std::vector(m_streams)) {
        if (const auto callback = stream->listener.*event) {
            callback();
        }
    }
}

AudioDevice FakeSource::record() const
{
    const auto lock = locked();
    return m_record;
}

bool FakeSource::isOpen() const
{
    const auto lock = locked();
    return !m_streams.empty();
}

bool FakeSource::isRunning() const
{
    const auto lock = locked();
    return std::ranges::any_of(m_streams, [](const Stream* stream) { return stream->handler != nullptr; });
}

class FakeAudio::Watch final : public HardwareWatch {
public:
    explicit Watch(FakeAudio& audio) : m_audio(audio) { }
    ~Watch() override
    {
        const auto lock = locked();
        m_audio.m_watches.erase(this);
    }

private:
    FakeAudio& m_audio;
};

std::shared_ptr<FakeSource> FakeAudio::add(
    const QString& uid, const QString& name, std::vector<std::int64_t> buffers, double rate)
{
    return add({.uid = uid, .name = name, .sampleRate = rate}, std::move(buffers));
}

std::shared_ptr<FakeSource> FakeAudio::add(const AudioDevice& record, std::vector<std::int64_t> buffers)
{
    const auto lock = locked();
    auto source = m_sources.emplace_back(std::make_shared<FakeSource>(record, std::move(buffers)));
    tellWatches();
    return source;
}

void FakeAudio::remove(const QString& uid)
{
    const auto lock = locked();
    if (const auto source = find(uid)) {
        std::erase(m_sources, source);
        source->disconnect();
        tellWatches();
    }
}

std::vector<AudioDevice> FakeAudio::devices()
{
    std::vector<AudioDevice> records = devicesAndTaps();
    std::erase_if(
        records, [](const AudioDevice& record) { return record.uid.startsWith(ProcessTap::aggregateUIDPrefix); });
    return records;
}

std::vector<AudioDevice> FakeAudio::devicesAndTaps() const
{
    const auto lock = locked();
    std::vector<AudioDevice> records;
    std::ranges::transform(m_sources, std::back_inserter(records), &FakeSource::record);
    return records;
}

std::optional<AudioDevice> FakeAudio::device(const QString& uid)
{
    const auto source = find(uid);
    return source ? std::optional(source->record()) : std::nullopt;
}

std::vector<std::int64_t> FakeAudio::inputBuffers(const QString& uid)
{
    const auto source = find(uid);
    return source ? source->m_buffers : std::vector<std::int64_t>();
}

std::optional<TakeRate> FakeAudio::takeRate(const QString& uid)
{
    const auto found = find(uid);
    return found ? std::optional(TakeRate{.hertz = found->record().sampleRate, .setByOthers = found->isHeldByOthers})
                 : std::nullopt;
}

std::expected<std::unique_ptr<CaptureStream>, int> FakeAudio::openCapture(
    const QString& uid, std::span<const std::int64_t> channels, CapturePurpose)
{
    const auto lock = locked();
    const auto source = find(uid);
    if (const int status = source ? source->openStatus.exchange(0) : ENODEV) {
        return std::unexpected(status);
    }
    return std::make_unique<FakeSource::Stream>(source, channels);
}

class FakeAudio::Tap final : public AudioTap {
public:
    Tap(FakeAudio& audio, QString uid) : m_audio(audio), m_uid(std::move(uid)) { }
    ~Tap() override { m_audio.remove(m_uid); }

private:
    FakeAudio& m_audio;
    QString m_uid;
};

std::expected<std::unique_ptr<AudioTap>, int> FakeAudio::openTap(
    const AudioProcess& process, const AudioTap::Request& request)
{
    if (tapStatus != 0) {
        return std::unexpected(tapStatus.load());
    }
    add(request.uid, process.name, std::vector<std::int64_t>(static_cast<std::size_t>(request.channels), 1), tapRate);
    return std::make_unique<Tap>(*this, request.uid);
}

std::expected<std::unique_ptr<PlaybackStream>, int> FakeAudio::openPlayback(
    const PlaybackStream::Request& request, PlaybackSource& source)
{
    const auto lock = locked();
    if (playbackStatus != 0) {
        return std::unexpected(playbackStatus.load());
    }
    m_output = std::make_shared<FakeOutput>(request);
    ++outputsOpened;
    return FakeOutput::openStream(m_output, source);
}

std::shared_ptr<FakeOutput> FakeAudio::output() const
{
    const auto lock = locked();
    return m_output;
}

std::unique_ptr<HardwareWatch> FakeAudio::watch(std::function<void()> onChange)
{
    const auto lock = locked();
    auto watch = std::make_unique<Watch>(*this);
    m_watches[watch.get()] = std::move(onChange);
    return watch;
}

std::shared_ptr<FakeSource> FakeAudio::find(const QString& uid) const
{
    const auto lock = locked();
    const auto found = std::ranges::find(m_sources, uid, [](const auto& source) { return source->m_record.uid; });
    return found == m_sources.end() ? nullptr : *found;
}

void FakeAudio::tellWatches()
{
    for (const auto& [watch, onChange] : std::map(m_watches)) {
        onChange();
    }
}

}  // namespace vantiro::test
