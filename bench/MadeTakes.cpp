// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/MadeTakes.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace vantiro::madeTakes {

namespace {

    constexpr std::int64_t sampleRate = 48'000;
    constexpr std::int64_t frameBytes = 6;
    constexpr std::int64_t bytesPerSecond = sampleRate * frameBytes;
    constexpr int loopSeconds = 16;

    template <class Integer>
    void append(QByteArray& bytes, Integer value)
    {
        value = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }

    QByteArray header(std::int64_t seconds)
    {
        const auto audioBytes = static_cast<std::uint32_t>(seconds * bytesPerSecond);
        QByteArray bytes("RIFF");
        append(bytes, audioBytes + 36);
        bytes.append("WAVEfmt ");
        append(bytes, std::uint32_t{16});
        append(bytes, std::uint16_t{1});
        append(bytes, std::uint16_t{2});
        append(bytes, static_cast<std::uint32_t>(sampleRate));
        append(bytes, static_cast<std::uint32_t>(bytesPerSecond));
        append(bytes, static_cast<std::uint16_t>(frameBytes));
        append(bytes, std::uint16_t{24});
        bytes.append("data");
        append(bytes, audioBytes);
        return bytes;
    }

    /// Two chords that swell and a burst of noise on every half second, in every second loop half as loud.
    QByteArray loop(double gain)
    {
        std::minstd_rand random(1);
        std::uniform_real_distribution<double> noise(-1, 1);
        QByteArray bytes;
        for (std::int64_t frame = 0; frame < loopSeconds * sampleRate; ++frame) {
            const double time = static_cast<double>(frame) / static_cast<double>(sampleRate);
            const double swell = 0.5 + 0.5 * std::sin(2 * std::numbers::pi * time / 8);
            const double beat = std::exp(-12 * std::fmod(time, 0.5));
            for (const double pitch : {55.0, 82.5}) {
                const double tone = std::sin(2 * std::numbers::pi * pitch * time)
                    + 0.4 * std::sin(2 * std::numbers::pi * 13 * pitch * time);
                const double sample = gain * (0.3 * swell * tone + 0.4 * beat * noise(random));
                const auto value = static_cast<std::int32_t>(std::lround(std::clamp(sample, -1.0, 1.0) * 8388607));
                for (const int shift : {0, 8, 16}) {
                    bytes.append(static_cast<char>(value >> shift));
                }
            }
        }
        return bytes;
    }

    Result<void> openNew(QFile& file, std::int64_t seconds)
    {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(header(seconds)) < 0) {
            return captureFailure(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
        }
        return {};
    }

    Result<void> finish(QFile& file, bool isWritten)
    {
        if (!isWritten || !file.flush()) {
            return captureFailure(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
        }
        return {};
    }

}  // namespace

Result<void> write(const QString& path, std::int64_t seconds, std::int64_t sounding)
{
    QFile file(path);
    if (const auto opened = openNew(file, seconds); !opened) {
        return opened;
    }
    const QByteArray loops[]{loop(1), loop(0.5)};
    const QByteArray silence(loops[0].size(), '\0');
    bool isWritten = true;
    for (std::int64_t second = 0; second < seconds && isWritten;) {
        const std::int64_t end = second < sounding ? std::min(sounding, seconds) : seconds;
        const std::int64_t part = std::min<std::int64_t>(loopSeconds, end - second);
        const QByteArray& from = second < sounding ? loops[second / loopSeconds % 2] : silence;
        isWritten = file.write(from.constData(), part * bytesPerSecond) == part * bytesPerSecond;
        second += part;
    }
    return finish(file, isWritten);
}

Result<void> writeSparse(const QString& path, std::int64_t seconds)
{
    QFile file(path);
    if (const auto opened = openNew(file, seconds); !opened) {
        return opened;
    }
    return finish(file, file.resize(header(seconds).size() + seconds * bytesPerSecond));
}

Result<void> writeMany(const QString& folder, int count)
{
    const QDateTime first(QDate(2024, 1, 1), QTime(20, 0));
    for (int number = 0; number < count; ++number) {
        const QString stamp = first.addSecs(3600 * number).toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
        const auto written = writeSparse(QStringLiteral("%1/mix-%2.wav").arg(folder, stamp), 1);
        if (!written) {
            return written;
        }
    }
    return {};
}

}  // namespace vantiro::madeTakes
