// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/Typeface.h"

#include "app/paint/Palette.h"

#include <QCache>
#include <QFontDatabase>
#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <cmath>

namespace vantiro::Typeface {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// Outlines are taken at this size and scaled, as a font's size in pixels is a whole number.
    constexpr int masterSize = 200;

    QFont master(const Style& style)
    {
        install();
        QFont font(family());
        font.setPixelSize(masterSize);
        font.setWeight(style.weight);
        font.setHintingPreference(QFont::PreferNoHinting);
        if (style.size > 0) {
            font.setLetterSpacing(QFont::AbsoluteSpacing, style.tracking * masterSize / style.size);
        }
        return font;
    }

    double scaleOf(const Style& style)
    {
        return style.size / masterSize;
    }

    /// Words at the master size. Figures that run come again and again, and taking them from the font is what costs
    /// most of painting them. Each thread that paints has its own.
    QPainterPath masterOutline(const QString& text, const Style& style)
    {
        thread_local QCache<QString, QPainterPath> known(300);
        const QString key = u"%1 %2 %3"_s.arg(int(style.weight)).arg(style.tracking / style.size).arg(text);
        if (const QPainterPath* path = known.object(key)) {
            return *path;
        }
        QPainterPath path;
        path.addText(0, 0, master(style), text);
        known.insert(key, new QPainterPath(path));
        return path;
    }

    QPainterPath moved(QPainterPath path, const Style& style, QPointF place)
    {
        path = QTransform::fromScale(scaleOf(style), scaleOf(style)).map(path);
        path.translate(place);
        path.setFillRule(Qt::WindingFill);
        return path;
    }

    double shiftOf(double width, Align align)
    {
        switch (align) {
        case Align::left:
            return 0;
        case Align::centre:
            return -width / 2;
        case Align::right:
            return -width;
        }
        return 0;
    }

}  // namespace

bool install()
{
    static const bool isInstalled = [] {
        constexpr std::array names{"400Regular"_L1, "500Medium"_L1, "600SemiBold"_L1, "700Bold"_L1};
        return std::ranges::all_of(names, [](QLatin1StringView name) {
            return QFontDatabase::addApplicationFont(u":/fonts/BarlowSemiCondensed_%1.ttf"_s.arg(name)) >= 0;
        });
    }();
    return isInstalled;
}

QString family()
{
    return u"Barlow Semi Condensed"_s;
}

double width(const QString& text, const Style& style)
{
    return QFontMetricsF(master(style)).horizontalAdvance(text) * scaleOf(style) - style.tracking;
}

QPainterPath outline(const QString& text, const Style& style, QPointF place, Align align)
{
    const double shift = align == Align::left ? 0 : shiftOf(width(text, style), align);
    return moved(masterOutline(text, style), style, place + QPointF(shift, 0));
}

QPainterPath tabular(const QString& text, const Style& style, QPointF place, Align align)
{
    const QFont font = master({.size = style.size, .weight = style.weight});
    const QFontMetricsF metrics(font);
    QPainterPath path;
    double end = 0;
    for (const QChar character : text) {
        const double glyph = metrics.horizontalAdvance(character);
        const double cell = character.isDigit() ? digitCell * masterSize : glyph;
        path.addPath(masterOutline(QString(character), {.size = style.size, .weight = style.weight})
                .translated(end + (cell - glyph) / 2, 0));
        end += cell;
    }
    return moved(path, style, place + QPointF(shiftOf(end * scaleOf(style), align), 0));
}

QPointF onPixels(QPointF place, double ratio)
{
    return {place.x(), std::round(place.y() * ratio) / ratio};
}

QString printed(QString text)
{
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == '-'_L1 && text[i + 1].isDigit()) {
            text[i] = QChar(u'−');
        }
    }
    return text;
}

void engrave(QPainter& painter, const QPainterPath& words, const QColor& colour, double ratio)
{
    const double shift = ratio > 1 ? 0.75 : 1;
    painter.fillPath(words.translated(0, -shift), palette::faded(palette::dark, 0.9));
    painter.fillPath(words.translated(0, shift), palette::faded(palette::light, 0.06));
    painter.fillPath(words, colour);
}

}  // namespace vantiro::Typeface
