// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>

#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace vantiro::test {

/// A sound file as another program's library reads it. All zero if it cannot be opened.
struct SoundFile {
    std::int64_t frames = 0;
    int channels = 0;
    int sampleRate = 0;
    std::vector<int> numbers;  ///< The samples in the file's own 24 bits; empty if they were not asked for.

    static SoundFile read(const QString& path, bool withSamples = true)
    {
        SF_INFO info = {};
        SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_READ, &info);
        if (file == nullptr) {
            return {};
        }
        SoundFile result{info.frames, info.channels, info.samplerate, {}};
        if (withSamples) {
            result.numbers.resize(static_cast<std::size_t>(info.frames * info.channels));
            result.numbers.resize(static_cast<std::size_t>(sf_readf_int(file, result.numbers.data(), info.frames))
                * static_cast<std::size_t>(info.channels));
            std::ranges::for_each(result.numbers, [](int& number) { number >>= 8; });
        }
        sf_close(file);
        return result;
    }
};

/// Samples of 24 bits that never come twice in the same order; the same ones on each run.
inline std::vector<int> noise(std::size_t samples)
{
    std::mt19937 random(24);
    std::vector<int> numbers(samples);
    std::ranges::generate(numbers, [&] { return static_cast<int>(random() & 0xFF'FFFFU) - 0x80'0000; });
    return numbers;
}

}  // namespace vantiro::test
