// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/LevelScale.h"

#include <QBrush>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <initializer_list>
#include <utility>

/// The strokes that all painters share. Colours between two stops keep their hue as their opacity changes.
namespace vantiro::Brushwork {

using Stops = std::initializer_list<std::pair<double, QColor>>;

[[nodiscard]] QBrush linear(QPointF from, QPointF to, Stops stops);
/// Straight down from `top` to `bottom`.
[[nodiscard]] QBrush falling(double top, double bottom, Stops stops);
/// Straight to the right.
[[nodiscard]] QBrush across(double left, double right, Stops stops);
/// From a circle of radius `inner` to one of `outer`.
[[nodiscard]] QBrush radial(QPointF centre, double inner, double outer, Stops stops);

void fillDisc(QPainter& painter, QPointF centre, double radius, const QBrush& brush);
void strokeRing(QPainter& painter, QPointF centre, double radius, double width, const QBrush& brush);
void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush);
void strokeRounded(QPainter& painter, const QRectF& rect, double radius, double width, const QBrush& brush);
void strokePath(QPainter& painter, const QPainterPath& path, double width, const QBrush& brush,
    Qt::PenCapStyle cap = Qt::FlatCap, Qt::PenJoinStyle join = Qt::RoundJoin);
/// Part of a circle, in degrees clockwise from the positive x axis.
[[nodiscard]] QPainterPath arc(QPointF centre, double radius, double startDegrees, double spanDegrees);

[[nodiscard]] QColor toneColour(LevelScale::Tone tone);

/// Sparse specks on nothing, 128 points wide and high, that repeat without a seam. One device pixel a speck.
[[nodiscard]] QImage grainTile(double ratio);
/// Such specks over what is already there, as sandblasting leaves them.
void grain(QPainter& painter, const QPainterPath& shape, double ratio);

/// The soft black shadow of a picture, which only its opacity makes; `deviation` is the bell curve's, in pixels.
[[nodiscard]] QImage softShadow(const QImage& image, double deviation);

}  // namespace vantiro::Brushwork
