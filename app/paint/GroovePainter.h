// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/Groove.h"

#include <QImage>
#include <QPointF>

#include <span>
#include <vector>

namespace vantiro {

/// Draws the groove onto the record. Its line is a few pixels wide, short from bend to bend, and never crosses itself:
/// measuring the distance from each pixel near it costs a tenth of what stroking a path does.
class GroovePainter {
public:
    /// Where on a canvas the groove can be. `corner` is the canvas's, in points of the deck.
    void prepare(const DeckGeometry& geometry, QSize canvas, QPointF corner, double ratio);
    /// Draws it over `ground`; both are opaque and as large as the canvas.
    void draw(QImage& canvas, const QImage& ground, std::span<const Groove::Point> points);

private:
    struct Span {
        std::size_t begin;
        std::size_t end;
    };

    void strokeLines(std::span<const Groove::Point> points);
    void strokeLine(QPointF from, QPointF to, double width, std::span<const QRgb> tints);
    [[nodiscard]] QPointF onCanvas(QPointF point) const;

    DeckGeometry m_geometry;
    QPointF m_corner;
    double m_ratio = 1;
    QImage m_line;              ///< The groove alone; clear between two drawings.
    std::vector<Span> m_spans;  ///< The pixels that it can reach, row by row.
};

}  // namespace vantiro
