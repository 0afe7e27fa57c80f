// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/ShapePicture.h"

#include "tool/ShapeBars.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    struct Colour {
        float red = 0;
        float green = 0;
        float blue = 0;
    };

    constexpr Colour rgb(std::uint32_t value)
    {
        return {static_cast<float>(value >> 16U & 0xFFU), static_cast<float>(value >> 8U & 0xFFU),
            static_cast<float>(value & 0xFFU)};
    }

    constexpr Colour faceplate = rgb(0x0B0D0B);
    constexpr Colour well = rgb(0x060806);
    constexpr Colour edgeDark = rgb(0x030403);
    constexpr Colour edgeLit = rgb(0x232923);
    constexpr Colour middleLine = rgb(0x232923);
    constexpr Colour timeMark = rgb(0x4A554A);
    constexpr Colour quiet = rgb(0x4F6B45);
    constexpr Colour lime = rgb(0xB8F034);
    constexpr Colour red = rgb(0xFF4B3A);

    Colour mix(const Colour& from, const Colour& to, float part)
    {
        return {std::lerp(from.red, to.red, part), std::lerp(from.green, to.green, part),
            std::lerp(from.blue, to.blue, part)};
    }

    /// A rectangle with round corners, in pixels.
    struct Box {
        float left = 0;
        float top = 0;
        float right = 0;
        float bottom = 0;
        float radius = 0;
    };

    class Canvas {
    public:
        Canvas(int width, int height) : m_picture{.width = width, .height = height, .pixels = {}}
        {
            m_picture.pixels.resize(
                std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        }

        /// Fills a box; pixels that it covers in part are blended. `colour` is asked for each row's middle.
        template <class ColourOfRow>
        void fill(const Box& box, ColourOfRow colour, float opacity = 1)
        {
            const int bottom = std::min(m_picture.height, static_cast<int>(std::ceil(box.bottom)));
            const int right = std::min(m_picture.width, static_cast<int>(std::ceil(box.right)));
            for (int row = std::max(0, static_cast<int>(std::floor(box.top))); row < bottom; ++row) {
                const float middle = static_cast<float>(row) + 0.5F;
                const Colour ink = colour(middle);
                for (int column = std::max(0, static_cast<int>(std::floor(box.left))); column < right; ++column) {
                    blend(column, row, ink, opacity * coverage(box, static_cast<float>(column) + 0.5F, middle));
                }
            }
        }
        void fill(const Box& box, const Colour& colour, float opacity = 1)
        {
            fill(box, [&colour](float) { return colour; }, opacity);
        }

        [[nodiscard]] Picture take() && { return std::move(m_picture); }

    private:
        /// How much of the pixel around a point the box covers, by the point's distance from its outline.
        static float coverage(const Box& box, float x, float y)
        {
            const float outsideX = std::max(box.left + box.radius - x, x - box.right + box.radius);
            const float outsideY = std::max(box.top + box.radius - y, y - box.bottom + box.radius);
            const float distance = std::hypot(std::max(outsideX, 0.0F), std::max(outsideY, 0.0F))
                + std::min(std::max(outsideX, outsideY), 0.0F) - box.radius;
            return std::clamp(0.5F - distance, 0.0F, 1.0F);
        }
        void blend(int column, int row, const Colour& ink, float part)
        {
            const auto at = std::size_t{3}
                * (static_cast<std::size_t>(row) * static_cast<std::size_t>(m_picture.width)
                    + static_cast<std::size_t>(column));
            std::uint8_t* pixel = &m_picture.pixels[at];
            const auto mixed = [part](std::uint8_t under, float over) {
                return static_cast<std::uint8_t>(std::lround(std::lerp(static_cast<float>(under), over, part)));
            };
            pixel[0] = mixed(pixel[0], ink.red);
            pixel[1] = mixed(pixel[1], ink.green);
            pixel[2] = mixed(pixel[2], ink.blue);
        }

        Picture m_picture;
    };

    /// The bars on whole pixels, so that all are equally sharp: as many as there are slices, or fewer.
    struct BarGrid {
        int pitch = 4;
        int width = 3;
        int count = 0;
        int left = 0;

        BarGrid(int from, int to, int slices)
        {
            const int room = to - from;
            pitch = std::max(pitch, (room + slices - 1) / std::max(1, slices));
            width = std::max(2, pitch * 3 / 4);
            count = room / pitch;
            left = from + (room - (count * pitch - (pitch - width))) / 2;
        }
    };

}  // namespace

Picture shapePicture(const TakeOverview& overview, double seconds, int width, int height)
{
    // All sizes follow the picture's; they are made for 1200 by 240, and a narrow one still has room for bars.
    const float scale = std::max(0.5F, static_cast<float>(std::min(height, width / 2)) / 240);
    const float margin = std::round(12 * scale);
    const Box face{0, 0, static_cast<float>(width), static_cast<float>(height), 0};
    const Box groove{margin, margin, face.right - margin, face.bottom - margin, std::round(8 * scale)};

    Canvas canvas(width, height);
    canvas.fill(face, faceplate);
    const float bevel = std::max(1.0F, std::round(scale));
    canvas.fill(
        {groove.left - bevel, groove.top - bevel, groove.right + bevel, groove.bottom + bevel, groove.radius + bevel},
        [&face](float y) { return mix(edgeDark, edgeLit, y / face.bottom); });
    canvas.fill(groove, well);

    const float padding = std::round(12 * scale);
    const BarGrid grid(static_cast<int>(groove.left + padding), static_cast<int>(groove.right - padding),
        static_cast<int>(overview.peaks.size()));
    const float middle = face.bottom / 2;
    const float reach = groove.bottom - std::round(16 * scale) - middle;
    canvas.fill({static_cast<float>(grid.left), middle - 0.5F, static_cast<float>(width - grid.left), middle + 0.5F, 0},
        middleLine);

    const std::vector<ShapeBar> bars = shapeBars(overview, grid.count);
    const float barWidth = static_cast<float>(grid.width);
    float left = static_cast<float>(grid.left);
    for (const ShapeBar& bar : bars) {
        const float half = std::max(barWidth / 2, bar.level * reach);
        if (bar.isClipped) {
            // A faint glow, so that one bar among hundreds is seen.
            canvas.fill(
                {left - barWidth, middle - reach - barWidth, left + 2 * barWidth, middle + reach + barWidth, barWidth},
                red, 0.18F);
        }
        canvas.fill({left, middle - half, left + barWidth, middle + half, barWidth / 2}, [&](float y) {
            const float part = std::clamp(std::abs(y - middle) / reach, 0.0F, 1.0F);
            return bar.isClipped ? red : mix(quiet, lime, part);
        });
        left += static_cast<float>(grid.pitch);
    }

    const double step = axisStep(seconds, std::max(1, grid.count * grid.pitch / 80));
    const float axisWidth = static_cast<float>(grid.count * grid.pitch);
    for (double time = step; time < seconds; time += step) {
        const float x = std::round(static_cast<float>(grid.left) + axisWidth * static_cast<float>(time / seconds));
        canvas.fill(
            {x, groove.bottom - std::round(8 * scale), x + bevel, groove.bottom - std::round(3 * scale), 0}, timeMark);
    }
    return std::move(canvas).take();
}

}  // namespace vantiro
