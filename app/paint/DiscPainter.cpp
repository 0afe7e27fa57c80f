// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DiscPainter.h"

#include "app/paint/DeckBitmap.h"
#include "app/paint/DeckWords.h"
#include "app/paint/Groove.h"
#include "app/paint/LedPainter.h"
#include "app/paint/PlatterPainter.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    constexpr double discReach = 0.44;
    constexpr double glassReach = 0.1435;
    constexpr double platterReach = 0.365;
    constexpr double dotsInner = 0.3525;
    constexpr double dotsOuter = 0.3635;
    constexpr double labelInner = 0.1475;
    constexpr double labelOuter = 0.181;

    QRgb* pixelsOf(QImage& image)
    {
        return reinterpret_cast<QRgb*>(image.bits());
    }

    const QRgb* pixelsOf(const QImage& image)
    {
        return reinterpret_cast<const QRgb*>(image.constBits());
    }

    bool contains(const std::array<LedRing::Lit, 2>& lit, int lamp)
    {
        return lamp >= 0 && lit.at(lamp < LedRing::segmentCount ? 0 : 1).contains(lamp % LedRing::segmentCount);
    }

    /// The lamp whose light a direction belongs to, left ones first; -1 in the gaps at top and bottom.
    int lampAt(double degrees)
    {
        for (const auto side : LedRing::sides) {
            const double start = LedRing::angleAt(side, 0);
            const double turned = side == LedRing::Side::left ? degrees - start : start - degrees;
            const double along = turned - 360 * std::floor(turned / 360);
            // The gap after each segment is parted between its neighbours.
            const double index = std::floor(along / LedRing::arcDegrees * LedRing::segmentCount + 0.13);
            if (index < LedRing::segmentCount) {
                return static_cast<int>(index) + (side == LedRing::Side::left ? 0 : LedRing::segmentCount);
            }
        }
        return -1;
    }

}  // namespace

QRectF DiscPainter::area(const DeckGeometry& geometry, double ratio)
{
    const QPointF corner(geometry.of(discReach), geometry.of(discReach));
    return DeckBitmap::snapped({geometry.centre() - corner, geometry.centre() + corner}, ratio);
}

void DiscPainter::drawOnto(QImage& image, const std::function<void(QPainter&)>& paint) const
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-m_area.topLeft());
    paint(painter);
}

bool DiscPainter::prepare(const DeckScene& scene)
{
    const Subject subject{.plate = scene.plate,
        .geometry = scene.geometry,
        .ratio = scene.ratio,
        .lamp = strobeLampOf(scene.readout.state)};
    if (m_subject != subject) {
        // A take begins and ends with another lamp: no moment to paint what is the same in both.
        const bool isSameShape = m_subject && m_subject->plate == subject.plate
            && m_subject->geometry == subject.geometry && m_subject->ratio == subject.ratio;
        m_subject.reset();
        m_area = area(scene.geometry, scene.ratio);
        prepareGrounds(scene);
        if (m_ground.isNull() || m_lamps.isNull()) {
            return false;
        }
        if (!isSameShape) {
            prepareRing(scene.geometry, scene.ratio);
            m_groove.prepare(scene.geometry, m_ground.size(), m_area.topLeft(), scene.ratio);
            m_takeNumber = -1;
        }
        m_subject = subject;
        m_frame = m_ground;
        m_turns.reset();
        m_lit.reset();
        m_hasSweep = false;
        m_hasGroove = false;
        m_readout.reset();
    }
    if (m_takeNumber != scene.takeNumber) {
        m_takeNumber = scene.takeNumber;
        const double ratio = scene.ratio;
        const double size = scene.geometry.size * ratio;
        m_label.prepare({.canvas = m_ground.size(),
                            .centre = (scene.geometry.centre() - m_area.topLeft()) * ratio,
                            .inner = labelInner * size,
                            .outer = labelOuter * size},
            [&](QPainter& painter) { paintLabelBand(painter, size, DeckWords::label(scene.takeNumber)); });
        m_turns.reset();
    }
    return true;
}

void DiscPainter::prepareGrounds(const DeckScene& scene)
{
    const DeckGeometry& deck = scene.geometry;
    const StrobeLamp lamp = strobeLampOf(scene.readout.state);
    const QSize pixels = (m_area.size() * scene.ratio).toSize();
    m_ground = QImage(pixels, QImage::Format_RGB32);
    if (m_ground.isNull()) {
        return;
    }
    m_ground.setDevicePixelRatio(scene.ratio);
    m_ground.fill(Qt::black);
    drawOnto(m_ground, [&](QPainter& painter) { paintPlinth(painter, scene.plate, deck, lamp, scene.ratio); });
    m_lamps = m_ground;
    drawOnto(m_lamps, [&](QPainter& painter) {
        for (const auto side : LedRing::sides) {
            for (int i = 0; i < LedRing::segmentCount; ++i) {
                paintLitSegment(painter, deck, side, i);
            }
        }
    });
    for (QImage* image : {&m_ground, &m_lamps}) {
        drawOnto(*image, [&](QPainter& painter) { paintPlatter(painter, deck); });
    }
    const QPointF centre = (deck.centre() - m_area.topLeft()) * scene.ratio;
    const double size = deck.size * scene.ratio;
    m_dots.prepare({.canvas = pixels, .centre = centre, .inner = dotsInner * size, .outer = dotsOuter * size},
        [&](QPainter& painter) { paintStrobeDots(painter, size, lamp); });
}

void DiscPainter::prepareRing(const DeckGeometry& geometry, double ratio)
{
    m_ring.clear();
    const QPointF centre = (geometry.centre() - m_area.topLeft()) * ratio;
    const double half = ringGlowWidth(geometry) / 2 * ratio + 1;
    const double radius = geometry.ringRadius() * ratio;
    for (int y = 0; y < m_ground.height(); ++y) {
        for (int x = 0; x < m_ground.width(); ++x) {
            const QPointF from = QPointF(x + 0.5, y + 0.5) - centre;
            const double away = std::hypot(from.x(), from.y());
            // What glows under the platter's rim is not seen, and its dots are not to be lost.
            if (std::abs(away - radius) > half || away < geometry.of(platterReach) * ratio) {
                continue;
            }
            const double degrees = std::atan2(from.y(), from.x()) * 180 / std::numbers::pi;
            m_ring.push_back({.offset = std::size_t(y) * std::size_t(m_ground.width()) + std::size_t(x),
                .lamp = static_cast<std::int16_t>(lampAt(degrees))});
        }
    }
}

void DiscPainter::drawLamps(const DeckScene& scene)
{
    const MeterLevels& levels = scene.readout.levels;
    const Lit lit{LedRing::lit(double{levels.left}, double{levels.holdLeft}),
        LedRing::lit(double{levels.right}, double{levels.holdRight})};
    const bool hasSweep = scene.sweepSeconds.has_value();
    if (m_lit == lit && !hasSweep && !m_hasSweep) {
        return;
    }
    m_lit = lit;
    m_hasSweep = hasSweep;
    std::array<bool, std::size_t{2} * LedRing::segmentCount> shines{};
    for (std::size_t i = 0; i < shines.size(); ++i) {
        shines.at(i) = contains(lit, static_cast<int>(i));
    }
    QRgb* to = pixelsOf(m_frame);
    const QRgb* unlit = pixelsOf(std::as_const(m_ground));
    const QRgb* bright = pixelsOf(std::as_const(m_lamps));
    for (const RingPixel& pixel : m_ring) {
        const bool shows = pixel.lamp >= 0 && shines[static_cast<std::size_t>(pixel.lamp)];
        to[pixel.offset] = (shows ? bright : unlit)[pixel.offset];
    }
    if (hasSweep) {
        drawOnto(m_frame, [&](QPainter& painter) { paintSweep(painter, scene.geometry, *scene.sweepSeconds); });
    }
}

void DiscPainter::drawGroove(const DeckScene& scene, const DeckMotion& motion)
{
    const Groove::Source source{.history = scene.history, .motion = motion, .pose = scene.pose};
    const auto points =
        Groove::points(scene.geometry, source, scene.ratio > 1 ? Groove::fineSteps : Groove::plainSteps);
    if (!points.empty() || m_hasGroove) {
        m_hasGroove = !points.empty();
        m_groove.draw(m_frame, m_ground, points);
    }
}

void DiscPainter::drawGlass(const DeckScene& scene)
{
    if (m_readout && m_readout->readsLike(scene.readout)) {
        return;
    }
    m_readout = scene.readout;
    const double glass = scene.geometry.of(glassReach) * scene.ratio;
    const QPointF centre = (scene.geometry.centre() - m_area.topLeft()) * scene.ratio;
    QRgb* to = pixelsOf(m_frame);
    const QRgb* from = pixelsOf(std::as_const(m_ground));
    // The square around it would reach into the label.
    for (int y = static_cast<int>(centre.y() - glass); y < static_cast<int>(centre.y() + glass); ++y) {
        const double away = y + 0.5 - centre.y();
        const double half = std::sqrt(std::max(0.0, glass * glass - away * away));
        const std::ptrdiff_t row = std::ptrdiff_t{y} * m_frame.width();
        const auto left = row + static_cast<int>(centre.x() - half);
        const auto right = row + static_cast<int>(centre.x() + half);
        std::copy(from + left, from + right, to + left);
    }
    drawOnto(m_frame, [&](QPainter& painter) { paintGlass(painter, scene.geometry, scene.readout); });
}

QImage DiscPainter::picture(const DeckScene& scene, const DeckMotion& motion)
{
    if (!prepare(scene)) {
        return {};
    }
    drawLamps(scene);
    if (m_turns != motion.turns) {
        m_turns = motion.turns;
        m_dots.draw(m_frame, m_ground,
            (motion.turns * strobeDotCount - std::floor(motion.turns * strobeDotCount)) / strobeDotCount);
        m_label.draw(m_frame, m_ground, motion.turns);
    }
    drawGroove(scene, motion);
    drawGlass(scene);
    return m_frame;
}

}  // namespace vantiro
