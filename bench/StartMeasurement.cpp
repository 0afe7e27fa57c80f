// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/StartMeasurement.h"

#include "core/capture/TakeHeader.h"
#include "core/recorder/RecorderClient.h"
#include "platform/rig/RampSignal.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <atomic>
#include <optional>
#include <thread>

namespace vantiro::StartMeasurement {

namespace {

    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    constexpr auto stopLimit = 15s;
    constexpr auto growLimit = 5s;
    constexpr int bytesPerFrame = 2 * 3;
    /// Enough to tell where in the ramp they come from.
    constexpr qint64 framesLooked = 64;
    constexpr std::int64_t rampPeriod = std::int64_t{1} << 24;

    /// When the device played what. The clock thread appends, all others read.
    class PlayedCycles {
    public:
        void append(std::int64_t position)
        {
            const std::size_t at = m_count.load(std::memory_order_relaxed);
            if (at < m_cycles.size()) {
                m_cycles[at] = {position, Clock::now()};
                m_count.store(at + 1, std::memory_order_release);
            }
        }

        /// When the cycle with this frame (modulo the ramp's period) was played.
        [[nodiscard]] std::optional<Clock::time_point> timeOf(std::int64_t frame) const
        {
            const std::size_t count = m_count.load(std::memory_order_acquire);
            std::optional<Clock::time_point> time;
            for (std::size_t at = 0; at < count && m_cycles[at].position % rampPeriod <= frame; ++at) {
                time = m_cycles[at].time;
            }
            return time;
        }

    private:
        struct Cycle {
            std::int64_t position = 0;
            Clock::time_point time;
        };

        std::vector<Cycle> m_cycles{std::size_t{1} << 16};
        std::atomic<std::size_t> m_count{0};
    };

    std::int32_t sampleAt(const char* bytes)
    {
        std::array<unsigned char, 4> octets{};
        std::copy_n(bytes, 3, octets.begin() + 1);
        return std::bit_cast<std::int32_t>(octets) >> 8;
    }

    /// The frame of the ramp that a take begins with.
    std::optional<std::int64_t> firstFrameOf(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || !file.seek(TakeHeader::size)) {
            return std::nullopt;
        }
        const QByteArray audio = file.read(framesLooked * bytesPerFrame);
        std::vector<std::int32_t> samples;
        for (qsizetype at = 0; at + bytesPerFrame <= audio.size(); at += bytesPerFrame) {
            samples.push_back(sampleAt(audio.constData() + at));
        }
        const auto report = RampSignal::check(samples, 0);
        return report && !report->firstBreak ? std::optional(report->start) : std::nullopt;
    }

    Result<Start> measureOne(const QString& recorder, const QString& take, const PlayedCycles& played)
    {
        const auto begin = Clock::now();
        const auto state = RecorderClient::start(
            {.source = SourceRef::device(QLatin1StringView(BenchRig::deviceName)), .output = take},
            {.findTool = [recorder] { return std::optional(recorder); }});
        const auto returned = Clock::now();
        if (!state) {
            return std::unexpected(state.error());
        }
        const qint64 enough = static_cast<qint64>(TakeHeader::size) + framesLooked * bytesPerFrame;
        while (QFileInfo(take).size() < enough && Clock::now() < returned + growLimit) {
            std::this_thread::sleep_for(5ms);
        }
        if (const auto stopped = RecorderClient::stop(stopLimit); !stopped) {
            return std::unexpected(stopped.error());
        }
        const auto frame = firstFrameOf(take);
        const auto time = frame ? played.timeOf(*frame) : std::nullopt;
        if (!time) {
            return captureFailure(QStringLiteral("%1 does not begin with what was played").arg(take));
        }
        return Start{.returned = returned - begin, .firstFrame = *time - begin};
    }

}  // namespace

Result<std::vector<Start>> run(const BenchRig& rig, const QString& recorder, int count)
{
    PlayedCycles played;
    const auto device = rig.makeDevice([&played](auto channels, int frames, std::int64_t position) {
        played.append(position);
        RampSignal::render(channels, frames, position);
    });
    if (!device) {
        return std::unexpected(device.error());
    }
    std::vector<Start> starts;
    for (int number = 0; number < count; ++number) {
        const auto start = measureOne(recorder, rig.path(QStringLiteral("start-%1.caf").arg(number)), played);
        if (!start) {
            return std::unexpected(start.error());
        }
        starts.push_back(*start);
    }
    return starts;
}

}  // namespace vantiro::StartMeasurement
