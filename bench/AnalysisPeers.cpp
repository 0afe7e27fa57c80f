// SPDX-License-Identifier: GPL-3.0-or-later
// vantiro_bench_peers loudness|peaks FILE: what the analysis is compared with, written as somebody would who has these
// libraries: integrated loudness by libebur128, and the peaks of 600 slices, both read to floats by libsndfile.
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

#include <ebur128.h>

namespace {

constexpr sf_count_t chunkFrames = 4096;

int loudness(SNDFILE* file, const SF_INFO& format)
{
    ebur128_state* state = ebur128_init(
        static_cast<unsigned>(format.channels), static_cast<unsigned long>(format.samplerate), EBUR128_MODE_I);
    std::vector<float> samples(static_cast<std::size_t>(chunkFrames * format.channels));
    sf_count_t frames = 0;
    while ((frames = sf_readf_float(file, samples.data(), chunkFrames)) > 0) {
        ebur128_add_frames_float(state, samples.data(), static_cast<std::size_t>(frames));
    }
    double found = 0;
    ebur128_loudness_global(state, &found);
    ebur128_destroy(&state);
    std::printf("%.12f\n", found);
    return 0;
}

int peaks(SNDFILE* file, const SF_INFO& format)
{
    constexpr sf_count_t slices = 600;
    std::vector<float> highest(slices);
    std::vector<float> samples(static_cast<std::size_t>(chunkFrames * format.channels));
    const sf_count_t sliceFrames = format.frames / slices + 1;
    sf_count_t frames = 0;
    for (sf_count_t done = 0;
        (frames = sf_readf_float(file, samples.data(), std::min(chunkFrames, sliceFrames - done % sliceFrames))) > 0;
        done += frames) {
        float& peak = highest[static_cast<std::size_t>(done / sliceFrames)];
        float largest = peak;
        for (sf_count_t sample = 0; sample < frames * format.channels; ++sample) {
            largest = std::max(largest, std::fabs(samples[static_cast<std::size_t>(sample)]));
        }
        peak = largest;
    }
    std::printf("%.9f\n", static_cast<double>(*std::max_element(highest.begin(), highest.end())));
    return 0;
}

}  // namespace

int main(int argc, char* argv[])
{
    SF_INFO format{};
    SNDFILE* const file = argc == 3 ? sf_open(argv[2], SFM_READ, &format) : nullptr;
    if (file == nullptr) {
        std::fputs("usage: vantiro_bench_peers loudness|peaks FILE\n", stderr);
        return 2;
    }
    const int status = std::string_view(argv[1]) == "peaks" ? peaks(file, format) : loudness(file, format);
    sf_close(file);
    return status;
}
