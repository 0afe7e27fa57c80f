// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The loops of a BlockKernel, for the registers of one kind of processor. Each instance is a source built for its own
// kind, so everything here has internal linkage and calls no inline function of the standard library: the linker would
// keep one copy of that, perhaps the one that not every processor can run. Vectors are exactly as wide as a register:
// compilers split wider ones badly, and what they vectorise by themselves changes with the weather.

#include "core/analysis/BlockKernel.h"
#include "core/analysis/KWeighting.h"

namespace vantiro {

namespace {

    /// Samples that are summed and compared side by side: enough to keep the units busy in spite of their latency.
    constexpr std::int64_t stride = 16;

    template <class Registers>
    struct PeakLanes {
        static constexpr std::int64_t width = 2 * Registers::width;
        static constexpr auto parts = static_cast<unsigned long>(stride / width);

        // A single running maximum is a chain that compilers will not split.
        typename Registers::Floats peaks[parts]{};

        [[gnu::always_inline]] void add(const float* samples) noexcept
        {
#pragma GCC unroll 8
            for (std::int64_t part = 0; part < stride / width; ++part) {
                const auto found = magnitudes(samples + part * width);
                peaks[part] = found > peaks[part] ? found : peaks[part];
            }
        }
        [[nodiscard]] float result() const noexcept
        {
            float lanes[stride];
            __builtin_memcpy(lanes, peaks, sizeof lanes);
            float largest = 0;
            for (const float lane : lanes) {
                largest = lane > largest ? lane : largest;
            }
            return largest;
        }

    private:
        [[gnu::always_inline]] static typename Registers::Floats magnitudes(const float* samples) noexcept
        {
            typename Registers::Bits bits;
            __builtin_memcpy(&bits, samples, sizeof bits);
            bits &= 0x7fffffffU;
            typename Registers::Floats lanes;
            __builtin_memcpy(&lanes, &bits, sizeof lanes);
            return lanes;
        }
    };

    template <class Registers>
    struct SquareLanes {
        static constexpr std::int64_t width = Registers::width;
        static constexpr auto parts = static_cast<unsigned long>(stride / width);

        typename Registers::Doubles sums[parts]{};

        [[gnu::always_inline]] void add(const float* samples) noexcept
        {
#pragma GCC unroll 8
            for (std::int64_t part = 0; part < stride / width; ++part) {
                const auto wide = Registers::widened(samples + part * width);
                sums[part] += wide * wide;
            }
        }
        [[nodiscard]] double result() const noexcept
        {
            double lanes[stride];
            __builtin_memcpy(lanes, sums, sizeof lanes);
            for (std::int64_t half = stride / 2; half > 0; half /= 2) {
                for (std::int64_t lane = 0; lane < half; ++lane) {
                    lanes[lane] += lanes[lane + half];
                }
            }
            return lanes[0];
        }
    };

    /// All samples, a stride at a time. Zeros at the end change neither a sum nor a maximum.
    template <class Add>
    [[gnu::always_inline]] inline void forStrides(const float* samples, std::int64_t frames, const Add& add) noexcept
    {
        std::int64_t at = 0;
        for (; at + stride <= frames; at += stride) {
            add(samples + at);
        }
        if (at < frames) {
            float rest[stride]{};
            __builtin_memcpy(rest, samples + at, static_cast<unsigned long>(frames - at) * sizeof(float));
            add(rest);
        }
    }

    template <class Registers>
    PlaneLevels levels(const float* samples, std::int64_t frames) noexcept
    {
        SquareLanes<Registers> squares;
        PeakLanes<Registers> peaks;
        forStrides(samples, frames, [&](const float* from) [[gnu::always_inline]] {
            squares.add(from);
            peaks.add(from);
        });
        return {.squares = squares.result(), .peak = peaks.result()};
    }

    template <class Registers>
    float peak(const float* samples, std::int64_t frames) noexcept
    {
        PeakLanes<Registers> peaks;
        forStrides(samples, frames, [&](const float* from) [[gnu::always_inline]] { peaks.add(from); });
        return peaks.result();
    }

    /// A register's worth of lanes on its way through both sections, in direct form 1: what the shelf gave is kept once
    /// and serves both.
    template <class Registers>
    struct Cascade {
        using Doubles = typename Registers::Doubles;

        /// Of filters whose first factor is 1: what is missing is put right in the energy.
        struct Factors {
            Doubles b1, b2, a1, a2, passA1, passA2;
        };

        Doubles input1, input2, shelf1, shelf2, pass1, pass2, slope1;
        Doubles energy{};

        Cascade(const WeightingState& state, std::int64_t lane) noexcept
            : input1(loaded(state.input1 + lane))
            , input2(loaded(state.input2 + lane))
            , shelf1(loaded(state.shelf1 + lane))
            , shelf2(loaded(state.shelf2 + lane))
            , pass1(loaded(state.pass1 + lane))
            , pass2(loaded(state.pass2 + lane))
            , slope1(shelf1 - shelf2)
        { }

        [[gnu::always_inline]] void add(const Doubles& input, const Factors& by) noexcept
        {
            // The newest output comes last, which keeps the chain from one frame to the next short.
            const Doubles ahead = input + by.b1 * input1 + by.b2 * input2;
            const Doubles shelf = (ahead - by.a2 * shelf2) - by.a1 * shelf1;
            const Doubles slope = shelf - shelf1;
            const Doubles pass = ((slope - slope1) - by.passA2 * pass2) - by.passA1 * pass1;
            input2 = input1;
            input1 = input;
            shelf2 = shelf1;
            shelf1 = shelf;
            slope1 = slope;
            pass2 = pass1;
            pass1 = pass;
            energy += pass * pass;
        }

        void finish(WeightingState& state, double* energies, std::int64_t lane, double scale) noexcept
        {
            save(state.input1 + lane, input1);
            save(state.input2 + lane, input2);
            save(state.shelf1 + lane, shelf1);
            save(state.shelf2 + lane, shelf2);
            save(state.pass1 + lane, pass1);
            save(state.pass2 + lane, pass2);
            energy = loaded(energies + lane) + energy * scale;
            __builtin_memcpy(energies + lane, &energy, sizeof energy);
        }

    private:
        [[gnu::always_inline]] static Doubles loaded(const double* from) noexcept
        {
            Doubles lanes;
            __builtin_memcpy(&lanes, from, sizeof lanes);
            return lanes;
        }
        static void save(double* to, Doubles& value) noexcept
        {
            constexpr double tiny = 1e-30;
            value = value > tiny || value < -tiny ? value : Doubles{};
            __builtin_memcpy(to, &value, sizeof value);
        }
    };

    /// As many lanes as a register holds, from the first to the last frame: one stream of operations after the other
    /// needs no more registers than there are, and its latency hides behind the other frames.
    template <class Registers>
    void weighRegister(const typename Cascade<Registers>::Factors& by, const float* const* planes, std::int64_t frames,
        WeightingState& state, double* energies, std::int64_t lane, double scale) noexcept
    {
        constexpr std::int64_t four = 4;
        typename Registers::Doubles inputs[four];
        Cascade<Registers> cascade(state, lane);
        std::int64_t at = 0;
        for (; at + four <= frames; at += four) {
            Registers::widenFour(planes + lane, at, inputs);
            cascade.add(inputs[0], by);
            cascade.add(inputs[1], by);
            cascade.add(inputs[2], by);
            cascade.add(inputs[3], by);
        }
        if (at < frames) {
            float rest[Registers::width][four]{};
            const float* padded[Registers::width];
            for (std::int64_t plane = 0; plane < Registers::width; ++plane) {
                padded[plane] = rest[plane];
                for (std::int64_t frame = 0; frame < frames - at; ++frame) {
                    rest[plane][frame] = planes[lane + plane][at + frame];
                }
            }
            Registers::widenFour(padded, 0, inputs);
            for (std::int64_t frame = 0; frame < frames - at; ++frame) {
                cascade.add(inputs[frame], by);
            }
        }
        cascade.finish(state, energies, lane, scale);
    }

    template <class Registers>
    void weigh(const KWeighting& weighting, const float* const* planes, std::int64_t frames, WeightingState& state,
        double* energies) noexcept
    {
        const auto all = [](double value) [[gnu::always_inline]] { return value - typename Registers::Doubles{}; };
        const typename Cascade<Registers>::Factors by{
            .b1 = all(weighting.b1 / weighting.b0),
            .b2 = all(weighting.b2 / weighting.b0),
            .a1 = all(weighting.a1),
            .a2 = all(weighting.a2),
            .passA1 = all(weighting.passA1),
            .passA2 = all(weighting.passA2),
        };
        for (std::int64_t lane = 0; lane < weighedLanes; lane += Registers::width) {
            weighRegister<Registers>(by, planes, frames, state, energies, lane, weighting.b0 * weighting.b0);
        }
    }

}  // namespace

}  // namespace vantiro
