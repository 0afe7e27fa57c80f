// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/ShapeText.h"

#include "core/foundation/Numbers.h"
#include "tool/ShapeBars.h"
#include "tool/Terminal.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    struct ShapeWords {
        Q_DECLARE_TR_FUNCTIONS(ShapeText)
    };

    constexpr int barRows = 4;
    constexpr int eighths = 8;
    constexpr int columnsPerMark = 11;

    QChar blockOf(const ShapeBar& bar, int row)
    {
        constexpr char16_t lowestBlock = 0x2581;
        // Silence is a thin line, so that the take has no holes.
        const int height =
            std::max(1, static_cast<int>(std::lround(bar.level * static_cast<float>(barRows * eighths))));
        const int lit = std::clamp(height - row * eighths, 0, eighths);
        return lit == 0 ? QChar(u' ') : QChar(static_cast<char16_t>(lowestBlock + lit - 1));
    }

    QString rowText(const std::vector<ShapeBar>& bars, int row, ClipMarks marks)
    {
        QString text;
        bool isRed = false;
        for (const ShapeBar& bar : bars) {
            const QChar block = blockOf(bar, row);
            const bool wantsRed = marks == ClipMarks::colour && bar.isClipped && block != u' ';
            if (wantsRed != isRed) {
                text += wantsRed ? u"\033[91m"_s : u"\033[0m"_s;
                isRed = wantsRed;
            }
            text += block;
        }
        return isRed ? text + u"\033[0m"_s : text;
    }

    QString markRow(const std::vector<ShapeBar>& bars)
    {
        QString text;
        for (const ShapeBar& bar : bars) {
            text += bar.isClipped ? QChar(0x25BC) : QChar(u' ');
        }
        return text;
    }

    QString axis(double seconds, int columns)
    {
        QString text(columns, u' ');
        const double step = axisStep(seconds, columns / columnsPerMark);
        for (double time = 0; time <= seconds; time += step) {
            const auto column = seconds > 0 ? static_cast<qsizetype>(time / seconds * columns) : 0;
            const QString mark = u"╵"_s + Terminal::clockText(time);
            if (column + mark.size() <= columns) {
                text.replace(column, mark.size(), mark);
            }
        }
        return text;
    }

    QString clipText(const TakeOverview& overview)
    {
        if (overview.clips.empty()) {
            return ShapeWords::tr("No clipping");
        }
        // Neighbouring slices are one place.
        int places = 1;
        for (std::size_t index = 1; index < overview.clips.size(); ++index) {
            places += overview.clips[index] > overview.clips[index - 1] + 1 ? 1 : 0;
        }
        return ShapeWords::tr("Clipped in %n places, %1 samples at full scale", nullptr, places)
            .arg(groupedNumber(overview.clippedSamples));
    }

}  // namespace

QStringList shapeText(const TakeOverview& overview, double seconds, int columns, ClipMarks marks)
{
    const std::vector<ShapeBar> bars = shapeBars(overview, columns);
    QStringList lines;
    if (marks == ClipMarks::row && !overview.clips.empty()) {
        lines << markRow(bars);
    }
    for (int row = barRows - 1; row >= 0; --row) {
        // A quiet take does not begin with empty lines.
        if (const QString text = rowText(bars, row, marks); row == 0 || !text.trimmed().isEmpty()) {
            lines << text;
        }
    }
    lines << axis(seconds, columns) << clipText(overview);
    return lines;
}

}  // namespace vantiro
