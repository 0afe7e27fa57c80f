// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/MeterLevels.h"
#include "app/paint/LevelScale.h"

#include <QCoreApplication>
#include <QImage>
#include <QPoint>
#include <QString>

#include <array>
#include <optional>

namespace vantiro {

/// The two bars of a meter, one cell beside the other, with their scale. Lit and unlit cells are painted once; a level
/// only decides where one picture gives way to the other.
class MeterPainter {
    Q_DECLARE_TR_FUNCTIONS(MeterPainter)

public:
    enum class Size {
        normal,
        compact,  ///< Bars only.
    };

    struct Form {
        Size size = Size::normal;
        double width = 0;  ///< Points.
        int segments = 64;
        double ratio = 1;  ///< Device pixels a point.

        bool operator==(const Form&) const = default;
    };

    /// A painted meter in device pixels, and where its corner lies from that of the meter.
    struct Result {
        QImage image;
        QPoint origin;
    };

    /// What of the levels can be seen: meters that show the same need not be painted again.
    struct Shown {
        struct Side {
            int lit = 0;                   ///< Cells, from the left.
            std::optional<int> hold = {};  ///< Where the mark stands along the bar, in device pixels.
            LevelScale::Tone holdTone = LevelScale::Tone::quiet;

            bool operator==(const Side&) const = default;
        };
        std::array<Side, 2> sides;
        QString readout;

        bool operator==(const Shown&) const = default;
    };

    /// Of the whole meter, in points.
    [[nodiscard]] static double height(Size size);
    [[nodiscard]] static Shown shown(const Form& form, const MeterLevels& levels);
    /// The highest peak in words; that it clipped comes first.
    [[nodiscard]] static QString readout(const MeterLevels& levels);
    /// Both levels as a screen reader says them.
    [[nodiscard]] static QString spoken(const MeterLevels& levels);

    [[nodiscard]] Result picture(const Form& form, const MeterLevels& levels);

private:
    void prepare(const Form& form);

    std::optional<Form> m_form;
    QImage m_unlit;
    QImage m_lit;
};

}  // namespace vantiro
