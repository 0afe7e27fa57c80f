// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyRoom.h"

#include "core/capture/PackedPcm.h"
#include "core/capture/TakeStorage.h"
#include "core/copies/CopyFiles.h"
#include "core/recorder/RecorderStateStore.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vantiro {

namespace CopyRoom {

    namespace {

        constexpr std::int64_t plainReserve = std::int64_t{1} << 30;
        constexpr std::int64_t takeReserveSeconds = 4LL * 3600;
        constexpr double aacBytesPerSecond = 32'000;
        /// What a take is taken to run at before it has told.
        constexpr double usualTakeRate = 48'000;

        std::int64_t wholeBytes(double bytes)
        {
            constexpr double largest = 9.0e18;
            return static_cast<std::int64_t>(std::clamp(std::ceil(bytes), 0.0, largest));
        }

        std::optional<std::int64_t> bytesPerSecondOfTakeOn(dev_t volume)
        {
            const std::optional<RecorderState> take = RecorderStateStore::running();
            if (!take || copyFiles::volumeOf(take->path) != volume) {
                return std::nullopt;
            }
            const double told = take->stats ? take->stats->sampleRate : 0;
            const auto channels = static_cast<double>(std::max<std::size_t>(take->channels.size(), 1));
            return wholeBytes(
                (told > 0 ? told : usualTakeRate) * channels * static_cast<double>(packedPcm::sampleBytes));
        }

    }  // namespace

    std::int64_t bytes(ExportFormat format, const TakeReader::Format& take)
    {
        const auto frames = static_cast<double>(take.frames);
        return format == ExportFormat::aac
            ? wholeBytes(frames / take.sampleRate * aacBytesPerSecond)
            : wholeBytes(frames * take.channels * static_cast<double>(packedPcm::sampleBytes));
    }

    std::int64_t reserve(const Volume& volume)
    {
        return volume.takeBytesPerSecond
            ? wholeBytes(static_cast<double>(*volume.takeBytesPerSecond) * static_cast<double>(takeReserveSeconds))
            : plainReserve;
    }

    bool fits(std::int64_t bytes, const Volume& volume)
    {
        return !volume.freeBytes || *volume.freeBytes - reserve(volume) >= bytes;
    }

    Volume volumeFor(const QString& destination)
    {
        Volume volume{.freeBytes = posixTakeStorage().freeBytesAt(destination)};
        if (const auto device = copyFiles::volumeOf(QFileInfo(destination).path())) {
            volume.takeBytesPerSecond = bytesPerSecondOfTakeOn(*device);
        }
        return volume;
    }

}  // namespace CopyRoom

CopyRoomWatch::CopyRoomWatch(std::function<CopyRoom::Volume()> volume, Clock now)
    : m_volume(std::move(volume))
    , m_now(std::move(now))
    , m_next(m_now() + interval)
{ }

bool CopyRoomWatch::isShort()
{
    if (const auto now = m_now(); !m_isShort && now >= m_next) {
        m_next = now + interval;
        m_isShort = !CopyRoom::fits(0, m_volume());
    }
    return m_isShort;
}

}  // namespace vantiro
