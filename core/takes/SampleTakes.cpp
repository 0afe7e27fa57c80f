// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/SampleTakes.h"

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <numbers>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantiro::SampleTakes {

namespace {

    constexpr std::int64_t framesPerSecond = 1000;
    constexpr std::uint32_t channels = 2;
    constexpr std::uint32_t frameBytes = channels * sizeof(std::int16_t);
    using Second = std::array<std::int16_t, framesPerSecond * channels>;

    /// SplitMix64, after Sebastiano Vigna's reference. The order of the draws is part of the takes.
    class Generator {
    public:
        explicit Generator(std::uint64_t seed) : m_state(seed) { }

        /// At least 0, below 1.
        double draw()
        {
            m_state += 0x9E37'79B9'7F4A'7C15U;
            std::uint64_t mixed = m_state;
            mixed = (mixed ^ mixed >> 30U) * 0xBF58'476D'1CE4'E5B9U;
            mixed = (mixed ^ mixed >> 27U) * 0x94D0'49BB'1331'11EBU;
            mixed ^= mixed >> 31U;
            return static_cast<double>(mixed >> 11U) * 0x1p-53;
        }
        /// At least 0, below `end`.
        std::int64_t drawBelow(std::int64_t end)
        {
            return static_cast<std::int64_t>(draw() * static_cast<double>(end));
        }

    private:
        std::uint64_t m_state;
    };

    void fade(std::vector<double>& levels)
    {
        constexpr std::size_t fadeIn = 90;
        constexpr std::size_t fadeOut = 120;
        for (std::size_t second = 0; second < std::min(fadeIn, levels.size()); ++second) {
            levels[second] *= static_cast<double>(second) * 0.7 / 90 + 0.3;
        }
        for (std::size_t left = std::min(fadeOut, levels.size()); left > 0; --left) {
            levels[levels.size() - left] *= std::max(static_cast<double>(left) / 120, 0.15);
        }
    }

    /// One level a second: tracks that breathe, some with a breakdown, some blended into the next.
    std::vector<double> envelope(std::int64_t seconds, Generator& random)
    {
        constexpr double pi = std::numbers::pi;
        std::vector<double> levels(static_cast<std::size_t>(seconds));
        const auto at = [&levels](std::int64_t second) -> double& { return levels[static_cast<std::size_t>(second)]; };
        double level = 0.72;
        for (std::int64_t start = 0; start < seconds;) {
            const std::int64_t length = 120 + random.drawBelow(120);
            level = std::clamp(level + (random.draw() - 0.5) * 0.2, 0.56, 0.84);
            const double period = random.draw() * 40 + 30;
            const double phase = 2 * random.draw() * pi;
            double jitter = 1;
            for (std::int64_t second = start; second < std::min(start + length, seconds); ++second) {
                if ((second - start) % 8 == 0) {
                    jitter = random.draw() * 0.2 + 0.8;
                }
                const double swell = std::sin(phase + static_cast<double>(second) * 2 * pi / period) * 0.07 + 0.93;
                at(second) = level * swell * jitter * (random.draw() * 0.05 + 0.95);
            }
            if (random.draw() < 0.35) {
                const std::int64_t first = start + random.drawBelow(length - 4);
                const std::int64_t span = 2 + random.drawBelow(3);
                for (std::int64_t second = first; second < std::min(first + span, seconds); ++second) {
                    at(second) *= 0.55;
                }
            }
            std::int64_t next = start + length;
            if (next < seconds && random.draw() < 0.45) {
                const std::int64_t gap = 20 + random.drawBelow(20);
                for (std::int64_t second = next; second < std::min(next + gap, seconds); ++second) {
                    at(second) = random.draw() * 0.12 + 0.3;
                }
                next += gap;
            }
            start = next;
        }
        fade(levels);
        return levels;
    }

    /// Frames from `first` up to but not including `end`.
    struct Burst {
        std::int64_t first = 0;
        std::int64_t end = 0;
    };

    /// In the middle of slices of the usual overview, so that each burst marks one or two of them.
    std::vector<Burst> burstsOf(const Plan& plan, std::int64_t frames)
    {
        const std::int64_t halfWidth = std::clamp<std::int64_t>(frames / 2400, 1, 250);
        std::vector<Burst> bursts;
        for (std::int64_t index = 0; index < plan.clips; ++index) {
            const auto slice = static_cast<std::int64_t>((static_cast<double>(index) * 0.27 + 0.22) * 600);
            const std::int64_t centre = (2 * slice + 1) * frames / 1200;
            bursts.push_back({centre - halfWidth, centre + halfWidth});
        }
        return bursts;
    }

    std::int16_t sampleOf(double value)
    {
        // Truncated, and full scale for 1 exactly.
        return static_cast<std::int16_t>(std::clamp(value, -1.0, 1.0) * 32767);
    }

    void makeSecond(Second& out, std::int64_t second, double level, const std::vector<Burst>& bursts, Generator& random)
    {
        for (std::int64_t index = 0; index < framesPerSecond; ++index) {
            // Two decaying kicks a second.
            const double beat = std::exp(-14 * static_cast<double>(index >= 500 ? index - 500 : index) / 500);
            const double sign = index % 2 == 0 ? 1 : -1;
            double value = sign * level * (beat * 0.75 + 0.25) + sign * level * random.draw() * 0.07;
            const std::int64_t frame = second * framesPerSecond + index;
            const bool isClipping = std::ranges::any_of(
                bursts, [frame](const Burst& burst) { return frame >= burst.first && frame < burst.end; });
            if (isClipping && index % 7 < 3) {
                value = sign;
            }
            const std::int16_t sample = qToLittleEndian(sampleOf(value));
            out[static_cast<std::size_t>(2 * index)] = sample;
            out[static_cast<std::size_t>(2 * index + 1)] = sample;
        }
    }

    QByteArray headerOf(std::int64_t frames)
    {
        constexpr std::uint32_t littleEndianIntegers = 2;
        constexpr std::int64_t editCountBytes = 4;
        QByteArray bytes;
        const auto add = [&bytes](auto number) {
            const auto ordered = qToBigEndian(number);
            bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
        };
        bytes.append("caff");
        add(std::uint16_t{1});
        add(std::uint16_t{0});
        bytes.append("desc");
        add(std::int64_t{32});
        add(std::bit_cast<std::uint64_t>(rate));
        bytes.append("lpcm");
        for (const std::uint32_t number : {littleEndianIntegers, frameBytes, 1U, channels, 16U}) {
            add(number);
        }
        bytes.append("data");
        add(std::int64_t{editCountBytes + frames * std::int64_t{frameBytes}});
        add(std::uint32_t{0});
        return bytes;
    }

    /// 0, or errno.
    int append(int descriptor, const char* bytes, std::size_t count)
    {
        while (count > 0) {
            const ssize_t written = ::write(descriptor, bytes, count);
            if (written < 0 && errno != EINTR) {
                return errno;
            }
            if (written > 0) {
                bytes += written;
                count -= static_cast<std::size_t>(written);
            }
        }
        return 0;
    }

    int appendAudio(int descriptor, const Plan& plan)
    {
        Generator random(plan.seed);
        const std::int64_t frames = plan.seconds * framesPerSecond;
        const QByteArray header = headerOf(frames);
        const std::vector<double> levels = envelope(plan.seconds, random);
        const std::vector<Burst> bursts = burstsOf(plan, frames);
        int status = append(descriptor, header.constData(), static_cast<std::size_t>(header.size()));
        Second samples{};
        for (std::int64_t second = 0; second < plan.seconds && status == 0; ++second) {
            makeSecond(samples, second, levels[static_cast<std::size_t>(second)], bursts, random);
            status = append(descriptor, reinterpret_cast<const char*>(samples.data()), sizeof samples);
        }
        return status;
    }

    Result<void> writeTake(const Plan& plan, const QString& path, const QString& name, const QDateTime& start)
    {
        const FileDescriptor file(
            ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!file.isOpen()) {
            return captureFailure(QStringLiteral("cannot create %1: %2").arg(name).arg(errno));
        }
        if (const int status = appendAudio(file.get(), plan); status != 0) {
            return captureFailure(QStringLiteral("write error in %1: %2").arg(name).arg(status));
        }
        const time_t end = start.toSecsSinceEpoch() + plan.seconds;
        const std::array<struct timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{end, 0}};
        if (::futimens(file.get(), times.data()) != 0) {
            return std::unexpected(errnoError(path, errno));
        }
        return {};
    }

}  // namespace

std::array<Plan, 3> standard()
{
    return {
        Plan{{QDate(2026, 9, 25), QTime(22, 10, 4)}, 3734, 0, 11},
        Plan{{QDate(2026, 9, 23), QTime(20, 35, 41)}, 2890, 3, 23},
        Plan{{QDate(2026, 9, 19), QTime(21, 5, 17)}, 1865, 0, 37},
    };
}

Result<std::vector<QString>> write(std::span<const Plan> plans, const QString& folder, const QTimeZone& timeZone)
{
    if (auto made = files::makeFolder(folder); !made) {
        return std::unexpected(std::move(made.error()));
    }
    std::vector<QString> paths;
    for (const Plan& plan : plans) {
        const QDateTime start(plan.start.date, plan.start.time, timeZone);
        // A time that is no time would silently become midnight.
        if (!plan.start.time.isValid() || !start.isValid()) {
            return captureFailure(QStringLiteral("the sample take has no valid date"));
        }
        const QDate date = start.date();
        const QTime time = start.time();
        // asprintf() writes plain digits; a locale's own digits or calendar have no place in a file name.
        const QString name = QString::asprintf("mix-%d-%02d-%02d_%02d-%02d-%02d.caf", date.year(), date.month(),
            date.day(), time.hour(), time.minute(), time.second());
        const QString path = QDir(folder).absoluteFilePath(name);
        if (auto written = writeTake(plan, path, name, start); !written) {
            return std::unexpected(std::move(written.error()));
        }
        paths.push_back(path);
    }
    return paths;
}

}  // namespace vantiro::SampleTakes
