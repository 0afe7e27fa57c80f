// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/DeckMotion.h"
#include "app/paint/DeckScene.h"
#include "app/paint/GlassPainter.h"
#include "app/paint/GroovePainter.h"
#include "app/paint/LedRing.h"
#include "app/paint/PlinthPainter.h"
#include "app/paint/TurningBand.h"

#include <QImage>
#include <QRectF>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// The square around the lamps and the record, up to the glass: everything that changes with level and turn. It is one
/// picture that is kept, and each frame only touches the pixels that change.
class DiscPainter {
public:
    /// What it covers, in whole device pixels.
    [[nodiscard]] static QRectF area(const DeckGeometry& geometry, double ratio);
    /// The picture of a scene. Opaque; null if it cannot be made.
    [[nodiscard]] QImage picture(const DeckScene& scene, const DeckMotion& motion);

private:
    /// What the grounds depend on.
    struct Subject {
        QRectF plate;
        DeckGeometry geometry;
        double ratio = 0;
        StrobeLamp lamp = StrobeLamp::out;

        bool operator==(const Subject&) const = default;
    };
    struct RingPixel {
        std::size_t offset;
        std::int16_t lamp;  ///< Left ones first; -1 between them.
    };
    using Lit = std::array<LedRing::Lit, LedRing::sides.size()>;

    [[nodiscard]] bool prepare(const DeckScene& scene);
    void prepareGrounds(const DeckScene& scene);
    void prepareRing(const DeckGeometry& geometry, double ratio);
    void drawLamps(const DeckScene& scene);
    void drawGroove(const DeckScene& scene, const DeckMotion& motion);
    void drawGlass(const DeckScene& scene);
    void drawOnto(QImage& image, const std::function<void(QPainter&)>& paint) const;

    std::optional<Subject> m_subject;
    int m_takeNumber = 0;
    QRectF m_area;
    QImage m_ground;  ///< With all lamps out.
    QImage m_lamps;   ///< With all lamps lit.
    QImage m_frame;   ///< The latest picture.
    QImage m_glass;
    std::vector<RingPixel> m_ring;
    TurningBand m_dots;
    TurningBand m_label;
    GroovePainter m_groove;

    std::optional<Lit> m_lit;  ///< What the latest picture shows.
    bool m_hasSweep = false;
    bool m_hasGroove = false;
    std::optional<double> m_turns;
    std::optional<Readout> m_readout;
};

}  // namespace vantiro
