// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/MadeSet.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantiro {

namespace {

    using Stereo = std::array<double, 2>;

    constexpr double turn = 2.0 * std::numbers::pi;
    constexpr double ceiling = 0.525;  // -5.6 dBFS
    constexpr int barsOfTrack = 32;
    constexpr int blendBars = 4;

    struct Track {
        double start;  ///< Seconds into the set.
        double beatsPerMinute;
        double root;                     ///< Hz, of the bass.
        std::array<int, 4> progression;  ///< Semitones above the root, a bar each.
        std::array<int, 4> thirds;       ///< Semitones from each chord's root to its third.
        std::uint32_t seed;
    };

    constexpr double barSeconds(double beatsPerMinute)
    {
        return 240.0 / beatsPerMinute;
    }

    constexpr std::array<Track, 2> tracks = {{
        {.start = 0.0,
            .beatsPerMinute = 124.0,
            .root = 55.0,
            .progression = {0, 0, -4, -2},
            .thirds = {3, 3, 4, 4},
            .seed = 11},
        {.start = (barsOfTrack - blendBars) * barSeconds(124.0),
            .beatsPerMinute = 128.0,
            .root = 65.41,
            .progression = {0, -4, 3, -2},
            .thirds = {3, 4, 4, 4},
            .seed = 29},
    }};
    static_assert(tracks[1].start + barsOfTrack * barSeconds(128.0) <= MadeSet::lengthSeconds);

    // Evenly spread in -1 to 1, and a function of its arguments alone (the finaliser of MurmurHash3).
    double noise(std::int64_t frame, std::uint32_t seed)
    {
        auto bits = static_cast<std::uint32_t>(frame) ^ (seed * 0x9E3779B9U);
        bits = (bits ^ (bits >> 16)) * 0x85EBCA6BU;
        bits = (bits ^ (bits >> 13)) * 0xC2B2AE35U;
        bits ^= bits >> 16;
        return static_cast<double>(bits) * (2.0 / 4294967295.0) - 1.0;
    }

    double semitones(int count)
    {
        return std::exp2(count / 12.0);
    }

    double smooth(double edge0, double edge1, double x)
    {
        const double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
        return t * t * (3.0 - 2.0 * t);
    }

    // Close to tanh, and exactly 1 from 3 on.
    double softened(double x)
    {
        const double held = std::clamp(x, -3.0, 3.0);
        return held * (27.0 + held * held) / (27.0 + 9.0 * held * held);
    }

    /// One instant of a track.
    struct Moment {
        std::int64_t frame;
        double seconds;  ///< Since the track began.
        double bar;      ///< Bars since the track began, with their fraction.
        double beat;     ///< Fraction of the beat, 0 to 1.
        double period;   ///< Of a beat, in seconds.
        int barOfFour;

        [[nodiscard]] double sinceBeat() const { return beat * period; }
    };

    double kick(const Moment& at)
    {
        const double t = at.sinceBeat();
        if (t > 0.45) {
            return 0.0;
        }
        // The integral of a pitch that falls from 190 to 48 Hz.
        const double phase = 48.0 * t + 142.0 / 34.0 * (1.0 - std::exp(-34.0 * t));
        return 0.95 * std::sin(turn * phase) * std::exp(-7.5 * t) * smooth(0.0, 0.001, t) * smooth(0.45, 0.35, t);
    }

    Stereo hats(const Moment& at, std::uint32_t seed)
    {
        const double t = at.sinceBeat() - at.period / 2;
        if (t < 0.0) {
            return {};
        }
        const double level = 0.34 * std::exp(-38.0 * t);
        // The difference of neighbours leaves the high end of the noise.
        const auto side = [&](std::uint32_t which) {
            return level * (noise(at.frame, which) - noise(at.frame - 1, which));
        };
        return {side(seed), side(seed + 1)};
    }

    Stereo clap(const Moment& at, std::uint32_t seed)
    {
        const auto beatOfBar = static_cast<int>(at.bar * 4.0) % 4;
        if (beatOfBar % 2 == 0) {
            return {};
        }
        const double level = 0.4 * std::exp(-22.0 * at.sinceBeat());
        return {level * noise(at.frame, seed + 2), level * noise(at.frame, seed + 3)};
    }

    double bass(const Moment& at, const Track& track)
    {
        // Sixteenths, the first of each beat left to the kick.
        const double sixteenth = at.beat * 4.0;
        if (sixteenth < 1.0) {
            return 0.0;
        }
        const double t = (sixteenth - std::floor(sixteenth)) * at.period / 4.0;
        const int octave = sixteenth >= 3.0 ? 12 : 0;
        const int chord = track.progression[static_cast<std::size_t>(at.barOfFour)];
        const double frequency = track.root * semitones(chord + octave);
        const double phase = turn * frequency * t;
        const double body = std::sin(phase) + 0.45 * std::sin(2.0 * phase) + 0.22 * std::sin(3.0 * phase);
        const double length = at.period / 4.0;
        return 0.34 * body * std::exp(-9.0 * t) * smooth(0.0, 0.004, t) * smooth(length, length - 0.01, t);
    }

    Stereo pad(const Moment& at, const Track& track)
    {
        const auto chord = static_cast<std::size_t>(at.barOfFour);
        const double root = 4.0 * track.root * semitones(track.progression[chord]);
        const double ofBar = at.bar - std::floor(at.bar);
        const double swell = smooth(0.0, 0.06, ofBar) * smooth(1.0, 0.94, ofBar);
        Stereo sum{};
        const std::array<int, 3> notes = {0, track.thirds[chord], 7};
        for (std::size_t note = 0; note < notes.size(); ++note) {
            const double phase = turn * root * semitones(notes[note]) * at.seconds;
            const double drift = 1.5 * std::sin(turn * 0.21 * at.seconds + static_cast<double>(note));
            // A phase that wavers at the octave gives the overtones of a bowed string.
            const double overtones = 1.1 * std::sin(2.0 * phase + 0.5 * drift);
            sum[0] += std::sin(phase + drift + overtones);
            sum[1] += std::sin(phase - drift + overtones);
        }
        const double level = 0.11 * swell * (1.0 + 0.25 * std::sin(turn * 0.4 * at.seconds));
        return {level * sum[0], level * sum[1]};
    }

    // A bright figure of three sixteenths against the four of the beat, thrown from side to side.
    Stereo pluck(const Moment& at, const Track& track)
    {
        const double sixteenth = at.bar * 16.0;
        const auto step = static_cast<std::int64_t>(sixteenth);
        if (step % 3 == 1) {
            return {};
        }
        const auto chord = static_cast<std::size_t>(at.barOfFour);
        const std::array<int, 4> notes = {0, 7, track.thirds[chord], 12};
        const double t = (sixteenth - std::floor(sixteenth)) * at.period / 4.0;
        const double fall = std::exp(-18.0 * t);
        const double frequency =
            8.0 * track.root * semitones(track.progression[chord] + notes[static_cast<std::size_t>(step % 4)]);
        const double phase = turn * frequency * t;
        const double tone = 0.17 * fall * smooth(0.0, 0.002, t) * std::sin(phase + 2.6 * fall * std::sin(3.0 * phase));
        const double side = step % 2 == 0 ? 0.3 : 1.0;
        return {tone * side, tone * (1.3 - side)};
    }

    // From nothing to full over the last two bars of the breakdown.
    Stereo riser(const Moment& at, double progress, std::uint32_t seed)
    {
        const double sweep = turn * (200.0 * at.seconds + 350.0 * progress * progress);
        const double tone = 0.1 * std::sin(sweep) * progress;
        const double hiss = 0.3 * progress * progress;
        return {tone + hiss * (noise(at.frame, seed + 4) - 0.6 * noise(at.frame - 1, seed + 4)),
            tone + hiss * (noise(at.frame, seed + 5) - 0.6 * noise(at.frame - 1, seed + 5))};
    }

    Stereo trackAt(const Track& track, std::int64_t frame, double setSeconds)
    {
        const double seconds = setSeconds - track.start;
        const double bar = seconds / barSeconds(track.beatsPerMinute);
        if (bar < 0.0 || bar >= barsOfTrack) {
            return {};
        }
        const double beats = bar * 4.0;
        const Moment at{.frame = frame,
            .seconds = seconds,
            .bar = bar,
            .beat = beats - std::floor(beats),
            .period = 60.0 / track.beatsPerMinute,
            .barOfFour = static_cast<int>(bar) % 4};
        const bool isFirst = track.start <= 0.0;
        const bool isBreakdown = bar >= 12.0 && bar < 16.0;
        // The second track comes in without its kick, so that two tempos never beat against each other.
        const bool hasKick = !isBreakdown && (isFirst || bar >= blendBars);
        const bool hasBass = !isBreakdown && bar >= 4.0 && bar < barsOfTrack - blendBars;

        Stereo sum{};
        const auto add = [&sum](const Stereo& part) {
            sum[0] += part[0];
            sum[1] += part[1];
        };
        const auto addMono = [&sum](double part) {
            sum[0] += part;
            sum[1] += part;
        };
        double duck = 1.0;
        if (hasKick) {
            addMono(kick(at));
            duck = 0.35 + 0.65 * smooth(0.0, 0.8, at.beat);
        }
        if (!isBreakdown || bar >= 14.0) {
            add(hats(at, track.seed));
        }
        if (hasBass) {
            addMono(bass(at, track));
            add(clap(at, track.seed));
        }
        if (bar >= 8.0 || !isFirst) {
            const Stereo chords = pad(at, track);
            const double level = isBreakdown ? 1.9 : duck;
            add({level * chords[0], level * chords[1]});
        }
        if (hasBass && bar >= 8.0) {
            add(pluck(at, track));
        }
        if (bar >= 14.0 && bar < 16.0) {
            add(riser(at, (bar - 14.0) / 2.0, track.seed));
        }
        const double fadeIn = isFirst ? 1.0 : smooth(0.0, 3.0, bar);
        const double fadeOut = smooth(barsOfTrack, barsOfTrack - blendBars, bar);
        return {sum[0] * fadeIn * fadeOut, sum[1] * fadeIn * fadeOut};
    }

}  // namespace

MadeSet::MadeSet(int sampleRate) : m_sampleRate(sampleRate) { }

std::array<float, 2> MadeSet::frame(std::int64_t position) const noexcept
{
    const std::int64_t length = std::llround(lengthSeconds * m_sampleRate);
    const std::int64_t frame = ((position % length) + length) % length;
    const double seconds = static_cast<double>(frame) / m_sampleRate;
    Stereo sum{};
    for (const Track& track : tracks) {
        const Stereo part = trackAt(track, frame, seconds);
        sum[0] += part[0];
        sum[1] += part[1];
    }
    return {static_cast<float>(ceiling * softened(sum[0])), static_cast<float>(ceiling * softened(sum[1]))};
}

void MadeSet::render(std::span<float* const> channels, int frames, std::int64_t position) const noexcept
{
    for (int index = 0; index < frames; ++index) {
        const std::array<float, 2> both = frame(position + index);
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            channels[channel][index] = channel < both.size() ? both[channel] : 0.0F;
        }
    }
}

}  // namespace vantiro
