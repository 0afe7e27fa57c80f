// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QString>

/// The family of all words, Barlow Semi Condensed, and lettering with it. Words are outlines: they stand at any size
/// and place, turned or not, which hinted glyphs cannot. Needs a QGuiApplication.
namespace vantiro::Typeface {

inline constexpr double digitCell = 0.52;  ///< The width of a tabular digit, in terms of the size.

struct Style {
    double size = 0;  ///< Points of the screen.
    QFont::Weight weight = QFont::Normal;
    double tracking = 0;  ///< Added between letters, in points.
};

enum class Align {
    left,
    centre,
    right,
};

/// Makes the family known to the program; once is enough, more do no harm. False if that failed.
bool install();
/// The family's name.
[[nodiscard]] QString family();

[[nodiscard]] double width(const QString& text, const Style& style);
/// `text` with its baseline at `place`.
[[nodiscard]] QPainterPath outline(const QString& text, const Style& style, QPointF place, Align align);
/// The same with every digit in a cell of one width, so that running figures stand still. Ignores the tracking.
[[nodiscard]] QPainterPath tabular(const QString& text, const Style& style, QPointF place, Align align);
/// `place` moved to the next whole device pixel up or down: words that stand still are sharper with their feet
/// there.
[[nodiscard]] QPointF onPixels(QPointF place, double ratio);
/// Signs before figures as they are printed: a true minus for a hyphen.
[[nodiscard]] QString printed(QString text);

/// `words` cut into the metal: a dark edge above, a light one below, then the colour. `ratio` is the screen's; at 1
/// the edges are whole pixels.
void engrave(QPainter& painter, const QPainterPath& words, const QColor& colour, double ratio);

}  // namespace vantiro::Typeface
