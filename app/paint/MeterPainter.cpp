// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/MeterPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/DeckWords.h"
#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using palette::faded;
    using Size = MeterPainter::Size;
    using Form = MeterPainter::Form;
    using Tone = LevelScale::Tone;
    using Typeface::Align;

    constexpr double barGap = 4;
    constexpr double cellGap = 1.25;
    constexpr double cellRadius = 1.5;
    constexpr double unlitOpacity = 0.16;
    constexpr double scaleTop = 32;
    constexpr double figureLine = 45;
    constexpr double wordLine = 57;
    constexpr int margin = 4;  ///< Points around the meter for hold marks and the feet of letters.
    constexpr std::array scaleLevels{-60, -40, -30, -20, -10, -6, -3, 0};
    constexpr double targetFrom = -10;
    constexpr double targetTo = -6;

    struct Measures {
        double inset;
        double barHeight;
        double below;
    };

    Measures measuresOf(Size size)
    {
        return size == Size::normal ? Measures{16, 14, 26} : Measures{0, 7, 0};
    }

    int pixels(const Form& form, double points)
    {
        return static_cast<int>(std::lround(points * form.ratio));
    }

    int barWidth(const Form& form)
    {
        return pixels(form, form.width) - pixels(form, measuresOf(form.size).inset);
    }

    int segmentsOf(const Form& form)
    {
        return std::max(1, form.segments);
    }

    /// Where a cell begins along its bar, in device pixels.
    int cellStart(const Form& form, int index)
    {
        return static_cast<int>(std::lround(double(index) * barWidth(form) / segmentsOf(form)));
    }

    /// A bar in device pixels, in the picture.
    QRect bar(const Form& form, int side)
    {
        const auto measures = measuresOf(form.size);
        return {pixels(form, margin) + pixels(form, measures.inset),
            pixels(form, margin + side * (measures.barHeight + barGap)), barWidth(form),
            pixels(form, measures.barHeight)};
    }

    Tone toneOfCell(const Form& form, int index)
    {
        return LevelScale::toneOf(LevelScale::levelAt((index + 0.5) / segmentsOf(form)));
    }

    void paintCells(QPainter& painter, const Form& form, bool isLit)
    {
        const double radius = std::min(cellRadius, measuresOf(form.size).barHeight / 2) * form.ratio;
        const int gap = std::max(1, pixels(form, cellGap));
        for (int side = 0; side < 2; ++side) {
            const QRect place = bar(form, side);
            for (int i = 0; i < segmentsOf(form); ++i) {
                const int left = cellStart(form, i);
                const QRectF cell(
                    place.left() + left, place.top(), std::max(1, cellStart(form, i + 1) - gap - left), place.height());
                const QColor colour = Brushwork::toneColour(toneOfCell(form, i));
                Brushwork::fillRounded(painter, cell, radius, isLit ? colour : faded(colour, unlitOpacity));
                if (isLit) {
                    const QRectF gleam(cell.left(), cell.top() + form.ratio, cell.width(), 0.28 * cell.height());
                    painter.fillRect(gleam, faded(palette::gloss, 0.1));
                }
            }
        }
    }

    double scalePlace(const Form& form, double levelDB)
    {
        const double inset = measuresOf(form.size).inset;
        return inset + LevelScale::fraction(levelDB) * (form.width - inset);
    }

    void paintFigures(QPainter& painter, const Form& form)
    {
        const Typeface::Style style{.size = 10, .weight = QFont::Medium};
        for (const int levelDB : scaleLevels) {
            const auto align = levelDB == 0      ? Align::right
                : levelDB == scaleLevels.front() ? Align::left
                                                 : Align::centre;
            const QString figure = Typeface::printed(QString::number(levelDB));
            painter.fillPath(Typeface::tabular(figure, style, {scalePlace(form, levelDB), figureLine}, align),
                LevelScale::toneOf(levelDB) >= Tone::warning ? palette::amber : palette::dim);
        }
    }

    void paintTarget(QPainter& painter, const Form& form)
    {
        const double left = scalePlace(form, targetFrom);
        const double right = scalePlace(form, targetTo);
        const double middle = (left + right) / 2;
        painter.fillRect(QRectF(left, scaleTop + 2, right - left, 2), palette::lime);
        QPainterPath triangle(QPointF(middle, scaleTop + 6.5));
        triangle.lineTo(middle - 3.5, scaleTop + 12);
        triangle.lineTo(middle + 3.5, scaleTop + 12);
        triangle.closeSubpath();
        painter.fillPath(triangle, palette::lime);

        const Typeface::Style style{.size = 11, .weight = QFont::Medium};
        const QString words = MeterPainter::tr("one track peaks here");
        const double half = Typeface::width(words, style) / 2;
        const QPointF place(std::min(middle, form.width - half), wordLine);
        painter.fillPath(Typeface::outline(words, style, place, Align::centre), palette::lime);
    }

    void paintSideNames(QPainter& painter, const Form& form)
    {
        const Typeface::Style style{.size = 11, .weight = QFont::DemiBold};
        const auto measures = measuresOf(form.size);
        for (int side = 0; side < 2; ++side) {
            const QPointF place(2, side * (measures.barHeight + barGap) + 11);
            const QString name = side == 0 ? MeterPainter::tr("L") : MeterPainter::tr("R");
            Typeface::engrave(painter,
                Typeface::outline(name, style, Typeface::onPixels(place, form.ratio), Align::left), palette::dim,
                form.ratio);
        }
    }

    /// Paints in points of the meter.
    QPainter& inPoints(QPainter& painter, const Form& form)
    {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(pixels(form, margin), pixels(form, margin));
        painter.scale(form.ratio, form.ratio);
        return painter;
    }

    void paintHold(QPainter& painter, const QRect& bar, const MeterPainter::Shown::Side& side, double ratio)
    {
        if (!side.hold) {
            return;
        }
        const int width = std::max(1, static_cast<int>(std::lround(2 * ratio)));
        const int seat = std::max(1, static_cast<int>(std::lround(1.5 * ratio)));
        const QRect mark(bar.left() + *side.hold - width / 2, bar.top() - seat, width, bar.height() + 2 * seat);
        painter.fillRect(mark.adjusted(-seat, 0, seat, 0), palette::metal(6));
        painter.fillRect(mark, side.holdTone == Tone::quiet ? palette::ink : Brushwork::toneColour(side.holdTone));
    }

}  // namespace

double MeterPainter::height(Size size)
{
    const auto measures = measuresOf(size);
    return 2 * measures.barHeight + barGap + measures.below;
}

QString MeterPainter::readout(const MeterLevels& levels)
{
    if (levels.clipped) {
        return tr("Clipped");
    }
    const float hold = std::max(levels.holdLeft, levels.holdRight);
    if (!(hold > meterFloorDB)) {
        return tr("No signal");
    }
    return tr("Peak  %1 dB").arg(DeckWords::decibels(double{hold}, 1));
}

QString MeterPainter::spoken(const MeterLevels& levels)
{
    return tr("Left %1, right %2 decibels")
        .arg(DeckWords::decibels(double{levels.left}, 0), DeckWords::decibels(double{levels.right}, 0));
}

MeterPainter::Shown MeterPainter::shown(const Form& form, const MeterLevels& levels)
{
    const auto side = [&form](double levelDB, double holdDB) {
        Shown::Side result;
        if (levelDB > double{meterFloorDB}) {
            result.lit = static_cast<int>(segmentsOf(form) * LevelScale::fraction(levelDB));
        }
        if (holdDB > double{meterFloorDB}) {
            result.hold = static_cast<int>(std::lround(LevelScale::fraction(holdDB) * barWidth(form)));
            result.holdTone = LevelScale::toneOf(holdDB);
        }
        return result;
    };
    return {.sides = {side(double{levels.left}, double{levels.holdLeft}),
                side(double{levels.right}, double{levels.holdRight})},
        .readout = form.size == Size::normal ? Typeface::printed(readout(levels)) : QString()};
}

void MeterPainter::prepare(const Form& form)
{
    if (m_form == form) {
        return;
    }
    m_form = form;
    const QSize size(pixels(form, form.width) + 2 * pixels(form, margin),
        pixels(form, height(form.size)) + 2 * pixels(form, margin));
    m_lit = QImage(size, QImage::Format_ARGB32_Premultiplied);
    m_unlit = m_lit;
    m_lit.fill(Qt::transparent);
    m_unlit.fill(Qt::transparent);
    if (size.isEmpty()) {
        return;
    }
    for (const bool isLit : {false, true}) {
        QPainter painter(isLit ? &m_lit : &m_unlit);
        painter.setRenderHint(QPainter::Antialiasing);
        paintCells(painter, form, isLit);
        if (!isLit && form.size == Size::normal) {
            inPoints(painter, form);
            paintSideNames(painter, form);
            paintFigures(painter, form);
            paintTarget(painter, form);
        }
    }
}

MeterPainter::Result MeterPainter::picture(const Form& form, const MeterLevels& levels)
{
    prepare(form);
    const Shown shown = MeterPainter::shown(form, levels);
    QImage image = m_unlit;
    QPainter painter(&image);
    for (int i = 0; i < 2; ++i) {
        const auto& side = shown.sides.at(static_cast<std::size_t>(i));
        const QRect place = bar(form, i);
        // Of an empty part Qt draws the whole.
        if (side.lit > 0) {
            const QRect lit(place.topLeft(), QSize(cellStart(form, side.lit), place.height()));
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.drawImage(lit.topLeft(), m_lit, lit);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
        paintHold(painter, place, side, form.ratio);
    }
    if (!shown.readout.isEmpty()) {
        const bool hasFigure = !levels.clipped && std::max(levels.holdLeft, levels.holdRight) > meterFloorDB;
        const QPointF place(measuresOf(form.size).inset, wordLine);
        inPoints(painter, form)
            .fillPath(Typeface::tabular(shown.readout, {.size = 12, .weight = QFont::DemiBold},
                          Typeface::onPixels(place, form.ratio), Align::left),
                levels.clipped  ? palette::redWord
                    : hasFigure ? palette::ink
                                : palette::dim);
    }
    painter.end();
    return {.image = image, .origin = {-pixels(form, margin), -pixels(form, margin)}};
}

}  // namespace vantiro
