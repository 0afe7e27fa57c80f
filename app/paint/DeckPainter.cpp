// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckPainter.h"

#include "app/paint/PlinthPainter.h"

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// The arm is painted finer than the screen: turning would blur it otherwise.
    constexpr double turnedFineness = 2;

    /// All that the arm and its shadow can cover as they swing.
    QRectF swing(const DeckGeometry& deck)
    {
        return {deck.pivot() - QPointF(deck.of(0.4), deck.of(0.14)), QSizeF(deck.of(0.49), deck.of(0.68))};
    }

}  // namespace

void DeckPainter::draw(QPainter& painter, const DeckScene& scene, const DeckMotion& motion)
{
    for (const Layer& layer : {plinth(scene), disc(scene, motion), arm(scene, scene.pose.value_or(motion.arm))}) {
        painter.drawImage(layer.place, layer.image);
    }
}

DeckPainter::Layer DeckPainter::plinth(const DeckScene& scene)
{
    const StrobeLamp lamp = strobeLampOf(scene.readout.state);
    const QImage* image =
        m_plinth.picture({.key = u"plinth %1"_s.arg(static_cast<int>(lamp)), .area = scene.plate, .ratio = scene.ratio},
            [&](QPainter& inner) { paintPlinth(inner, scene.plate, scene.geometry, lamp, scene.ratio); });
    return {.image = image != nullptr ? *image : QImage(),
        .place = DeckBitmap::snapped(scene.plate, scene.ratio).topLeft()};
}

DeckPainter::Layer DeckPainter::disc(const DeckScene& scene, const DeckMotion& motion)
{
    return {.image = m_disc.picture(scene, motion), .place = DiscPainter::area(scene.geometry, scene.ratio).topLeft()};
}

const DeckPainter::Layer& DeckPainter::arm(const DeckScene& scene, double amount)
{
    const bool isLit = scene.readout.state.kind == DeckState::Kind::recording;
    const ArmSubject subject{.geometry = scene.geometry,
        .ratio = scene.ratio,
        .amount = amount,
        .lamp = isLit ? NeedleLamp::lit : NeedleLamp::out};
    if (m_armSubject == subject) {
        return m_armLayer;
    }
    const QRectF area = swing(scene.geometry);
    DeckBitmap bitmap;
    const QImage* image = bitmap.picture(
        {.key = {}, .area = area, .ratio = scene.ratio}, [&](QPainter& inner) { drawArm(inner, subject); });
    m_armLayer = {
        .image = image != nullptr ? *image : QImage(), .place = DeckBitmap::snapped(area, scene.ratio).topLeft()};
    m_armSubject = image != nullptr ? std::optional(subject) : std::nullopt;
    return m_armLayer;
}

void DeckPainter::drawArm(QPainter& painter, const ArmSubject& subject)
{
    const DeckGeometry& deck = subject.geometry;
    const double degrees = deck.armAngle(subject.amount) * 180 / std::numbers::pi - 90;
    const auto drawTurned = [&](QPointF place, DeckBitmap& bitmap, const QString& key, double ratio,
                                const DeckBitmap::Paint& paint) {
        painter.save();
        painter.translate(place);
        painter.rotate(degrees);
        bitmap.draw(painter, {.key = key, .area = armArea(deck.size), .ratio = ratio}, paint);
        painter.restore();
    };
    const bool isLit = subject.lamp == NeedleLamp::lit;
    drawTurned(deck.pivot() + armShadowOffset(deck.size, subject.amount), m_armShadow, u"arm shadow"_s, subject.ratio,
        [&](QPainter& inner) { paintArmShadow(inner, deck.size, subject.ratio); });
    drawTurned(deck.pivot(), m_arm, isLit ? u"arm lit"_s : u"arm"_s, turnedFineness * subject.ratio,
        [&](QPainter& inner) { paintArm(inner, deck.size, subject.lamp); });
    if (isLit) {
        paintNeedleGlow(painter, deck.size, deck.armTip(subject.amount));
    }
}

}  // namespace vantiro
