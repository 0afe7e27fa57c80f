// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/analysis/PlainLoudness.h"

#include <array>
#include <cmath>
#include <numbers>

namespace vantiro::test {

namespace {

    struct Biquad {
        std::array<double, 3> b;
        std::array<double, 3> a;

        [[nodiscard]] std::vector<double> filtered(const std::vector<double>& x) const
        {
            std::vector<double> y(x.size());
            const auto at = [](const std::vector<double>& values, std::size_t now, std::size_t ago) {
                return now >= ago ? values[now - ago] : 0;
            };
            for (std::size_t n = 0; n < x.size(); ++n) {
                y[n] = b[0] * x[n] + b[1] * at(x, n, 1) + b[2] * at(x, n, 2) - a[1] * at(y, n, 1) - a[2] * at(y, n, 2);
            }
            return y;
        }
    };

    Biquad highShelf(double rate)
    {
        const double k = std::tan(std::numbers::pi * 1681.974450955533 / rate);
        const double q = 0.7071752369554196;
        const double high = 1.5848647011308556;
        const double band = 1.2587209302325617;
        const double a0 = 1 + k / q + k * k;
        return {.b = {(high + band * k / q + k * k) / a0, 2 * (k * k - high) / a0, (high - band * k / q + k * k) / a0},
            .a = {1, 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0}};
    }

    Biquad highPass(double rate)
    {
        const double k = std::tan(std::numbers::pi * 38.13547087602444 / rate);
        const double q = 0.5003270373238773;
        const double a0 = 1 + k / q + k * k;
        return {.b = {1, -2, 1}, .a = {1, 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0}};
    }

    double mean(const std::vector<double>& values)
    {
        double sum = 0;
        for (const double value : values) {
            sum += value;
        }
        return sum / static_cast<double>(values.size());
    }

}  // namespace

std::optional<double> plainLoudness(double sampleRate, const Planes& planes)
{
    const auto step = static_cast<std::size_t>(std::lround(sampleRate / 10));
    std::vector<double> steps(planes.front().size() / step);
    for (const std::vector<float>& plane : planes) {
        const std::vector<double> samples(plane.begin(), plane.end());
        const std::vector<double> weighted = highPass(sampleRate).filtered(highShelf(sampleRate).filtered(samples));
        for (std::size_t frame = 0; frame < steps.size() * step; ++frame) {
            steps[frame / step] += weighted[frame] * weighted[frame] / static_cast<double>(step);
        }
    }
    std::vector<double> loud;
    for (std::size_t block = 0; block + 4 <= steps.size(); ++block) {
        const double power = (steps[block] + steps[block + 1] + steps[block + 2] + steps[block + 3]) / 4;
        if (power >= std::pow(10, (-70 + 0.691) / 10)) {
            loud.push_back(power);
        }
    }
    if (loud.empty()) {
        return std::nullopt;
    }
    const double gate = mean(loud) / 10;
    std::erase_if(loud, [&](double power) { return power <= gate; });
    return loud.empty() ? std::nullopt : std::optional(10 * std::log10(mean(loud)) - 0.691);
}

}  // namespace vantiro::test
