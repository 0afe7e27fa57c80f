// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/ArmPainter.h"
#include "app/paint/DeckBitmap.h"
#include "app/paint/DeckGeometry.h"
#include "app/paint/DeckMotion.h"
#include "app/paint/DeckScene.h"
#include "app/paint/DiscPainter.h"

#include <QImage>
#include <QPainter>
#include <QPointF>

#include <optional>

namespace vantiro {

/// Paints the deck in layers. What stands still is kept as pictures, and what only turns is never painted again.
class DeckPainter {
public:
    /// A picture at the screen's ratio and where its corner lies, in points. A null image shows nothing.
    struct Layer {
        QImage image;
        QPointF place;
    };

    /// What stands still under everything.
    [[nodiscard]] Layer plinth(const DeckScene& scene);
    /// The square around lamps and record, opaque: all that changes with level and turn, up to the glass.
    [[nodiscard]] Layer disc(const DeckScene& scene, const DeckMotion& motion);
    /// The arm with its shadow and the needle's light.
    [[nodiscard]] const Layer& arm(const DeckScene& scene, double amount);

    /// The whole deck, the lowest layer first. The painter is in the coordinates of the plate and not turned.
    void draw(QPainter& painter, const DeckScene& scene, const DeckMotion& motion);

private:
    /// What the arm's layer shows.
    struct ArmSubject {
        DeckGeometry geometry;
        double ratio = 0;
        double amount = 0;
        NeedleLamp lamp = NeedleLamp::out;

        bool operator==(const ArmSubject&) const = default;
    };

    void drawArm(QPainter& painter, const ArmSubject& subject);

    DeckBitmap m_plinth;
    DiscPainter m_disc;
    DeckBitmap m_arm;
    DeckBitmap m_armShadow;
    std::optional<ArmSubject> m_armSubject;
    Layer m_armLayer;
};

}  // namespace vantiro
