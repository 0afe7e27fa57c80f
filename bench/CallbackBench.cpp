// SPDX-License-Identifier: GPL-3.0-or-later
// What the audio callback costs a frame. The sound is a made set, ten seconds of it, so that neither the branches nor
// the caches know it by heart.
#include "core/capture/AudioRing.h"
#include "core/capture/IOState.h"
#include "core/capture/PeakScan.h"
#include "platform/rig/MadeSet.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <numeric>
#include <vector>

namespace vantiro {

namespace {

    constexpr int sampleRate = 48000;
    constexpr std::int64_t setFrames = std::int64_t{10} * sampleRate;
    /// As the recorder has it for stereo at 48 kHz.
    constexpr std::size_t ringSamples = std::size_t{30} * sampleRate * 2;

    /// The recorder's ring, with a reader that is done at once.
    class DrainedRing final : public FrameSink {
    public:
        explicit DrainedRing(std::int64_t channels) : m_channels(channels), m_ring(ringSamples) { }

        Offer offer(const float* interleaved, std::int64_t frames) noexcept override
        {
            const auto samples = static_cast<std::size_t>(frames * m_channels);
            if (!m_ring.write({interleaved, samples})) {
                return {Offer::full, 0};
            }
            m_ring.consume(samples);
            return {Offer::accepted, frames};
        }

    private:
        std::int64_t m_channels;
        AudioRing m_ring;
    };

    /// The set as a source delivers it: a buffer a channel (`isPlanar`), or all channels in one.
    class Source {
    public:
        Source(std::int64_t channels, bool isPlanar)
            : m_stride(isPlanar ? 1 : channels)
            , m_buffers(static_cast<std::size_t>(isPlanar ? channels : 1))
            , m_samples(m_buffers.size(), std::vector<float>(static_cast<std::size_t>(setFrames * m_stride)))
        {
            const MadeSet set(sampleRate);
            for (std::int64_t frame = 0; frame < setFrames; ++frame) {
                const std::array<float, 2> pair = set.frame(frame);
                for (std::int64_t channel = 0; channel < channels; ++channel) {
                    auto& buffer = m_samples[static_cast<std::size_t>(isPlanar ? channel : 0)];
                    buffer[static_cast<std::size_t>(frame * m_stride + (isPlanar ? 0 : channel))] =
                        pair[static_cast<std::size_t>(channel % 2)];
                }
            }
        }

        [[nodiscard]] std::span<const AudioBuffer> next(std::int64_t frames)
        {
            if (m_position + frames > setFrames) {
                m_position = 0;
            }
            for (std::size_t buffer = 0; buffer < m_buffers.size(); ++buffer) {
                m_buffers[buffer] = {.samples = m_samples[buffer].data() + m_position * m_stride,
                    .bytes = frames * m_stride * static_cast<std::int64_t>(sizeof(float))};
            }
            m_position += frames;
            return m_buffers;
        }

    private:
        std::int64_t m_stride;
        std::vector<AudioBuffer> m_buffers;
        std::vector<std::vector<float>> m_samples;
        std::int64_t m_position = 0;
    };

    /// Arguments: frames a block, channels, a buffer a channel or one for all, with the ring or as a meter.
    void callback(benchmark::State& state)
    {
        const std::int64_t frames = state.range(0);
        const std::int64_t channels = state.range(1);
        const bool isPlanar = state.range(2) != 0;
        Source source(channels, isPlanar);
        std::vector<std::int64_t> wanted(static_cast<std::size_t>(channels));
        std::iota(wanted.begin(), wanted.end(), 1);
        const std::vector<std::int64_t> shape =
            isPlanar ? std::vector<std::int64_t>(wanted.size(), 1) : std::vector<std::int64_t>{channels};
        DrainedRing ring(channels);
        IOState io(wanted, shape);
        io.setSink(state.range(3) != 0 ? &ring : nullptr);
        double time = 0;
        for (auto _ : state) {
            io.process({.buffers = source.next(frames), .sampleTime = time, .hostNanoseconds = 1});
            time += static_cast<double>(frames);
        }
        if (io.writeErrors() != 0 || io.discontinuities() != 0 || io.frames() != state.iterations() * frames) {
            state.SkipWithError("the callback lost frames");
        }
        state.SetItemsProcessed(state.iterations() * frames);
    }

    /// The least that any recorder does with a block: it keeps the samples and looks for the loudest.
    void peer(benchmark::State& state)
    {
        const std::int64_t frames = state.range(0);
        Source source(2, false);
        std::vector<float> kept(ringSamples);
        std::size_t at = 0;
        float peak = 0;
        for (auto _ : state) {
            const AudioBuffer& buffer = source.next(frames).front();
            const auto samples = static_cast<std::size_t>(frames) * 2;
            at = at + samples > kept.size() ? 0 : at;
            std::copy_n(buffer.samples, samples, kept.data() + at);
            for (std::size_t sample = at; sample < at + samples; ++sample) {
                peak = std::max(peak, std::abs(kept[sample]));
            }
            at += samples;
            benchmark::DoNotOptimize(peak);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * frames);
    }

    /// The callback's own look for the loudest sample.
    void peaks(benchmark::State& state)
    {
        const std::int64_t frames = state.range(0);
        Source source(2, false);
        for (auto _ : state) {
            benchmark::DoNotOptimize(scanPeaks(source.next(frames).front().samples, frames, 2));
        }
        state.SetItemsProcessed(state.iterations() * frames);
    }

    BENCHMARK(callback)
        ->ArgNames({"frames", "channels", "planar", "ring"})
        ->Args({256, 2, 1, 1})
        ->Args({256, 2, 1, 0})
        ->Args({64, 2, 1, 1})
        ->Args({1024, 2, 1, 1})
        ->Args({256, 2, 0, 1})
        ->Args({256, 1, 1, 1})
        ->Args({256, 8, 1, 1});
    BENCHMARK(peer)->ArgName("frames")->Arg(256);
    BENCHMARK(peaks)->ArgName("frames")->Arg(256);

}  // namespace

}  // namespace vantiro
