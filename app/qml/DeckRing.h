// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/paint/DeckPainter.h"
#include "app/qml/PaintTick.h"

#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTimer>

#include <array>
#include <vector>

namespace vantiro {

/// The deck on its plinth, which together fill the item. It shows the model and asks nothing of it: the press surface
/// is laid over `glass` by whoever uses it. While nothing moves it draws nothing and runs no timer.
class DeckRing : public QQuickItem, private PaintTick::Client {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vantiro::AppModel* model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(int takeNumber READ takeNumber WRITE setTakeNumber NOTIFY takeNumberChanged)
    Q_PROPERTY(bool moving READ moving WRITE setMoving NOTIFY movingChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(bool hovered READ hovered WRITE setHovered NOTIFY hoveredChanged)
    Q_PROPERTY(double pressScale READ pressScale WRITE setPressScale NOTIFY pressScaleChanged)
    Q_PROPERTY(QRectF glass READ glass NOTIFY glassChanged)

public:
    using Moment = PaintTick::Moment;

    explicit DeckRing(QQuickItem* parent = nullptr);
    ~DeckRing() override;

    [[nodiscard]] AppModel* model() const { return m_model; }
    void setModel(AppModel* model);

    /// What stands on the label.
    [[nodiscard]] int takeNumber() const { return m_takeNumber; }
    void setTakeNumber(int number);

    /// Otherwise platter and arm stand still, where they belong.
    [[nodiscard]] bool moving() const { return m_moving; }
    void setMoving(bool moving);

    /// Platter and arm are at once where they go, and nothing circles.
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    void setReducedMotion(bool reduced);

    /// The pointer is over the glass, which says what a press would do.
    [[nodiscard]] bool hovered() const { return m_hovered; }
    void setHovered(bool hovered);

    /// Of the glass and its words; smaller than 1 while pressed.
    [[nodiscard]] double pressScale() const { return m_pressScale; }
    void setPressScale(double scale);

    /// The square around the glass in the middle, the press surface.
    [[nodiscard]] QRectF glass() const;

Q_SIGNALS:
    void modelChanged();
    void takeNumberChanged();
    void movingChanged();
    void reducedMotionChanged();
    void hoveredChanged();
    void pressScaleChanged();
    void glassChanged();

protected:
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void paintTick(Moment now) override;

    /// Asks for a frame, if there is somebody to see it.
    void wake();
    void watch(QQuickWindow* window);
    void stateChanged();
    void levelsChanged();
    /// Moves platter and arm on to `now` as the state drives them, and keeps what is heard on the way.
    void advance(Moment now);
    /// The same without listening.
    void move(Moment now);
    void keepHeard();
    void readClock();
    void paint();
    void followPlace();
    [[nodiscard]] bool isSeen() const;
    [[nodiscard]] bool moves() const;
    [[nodiscard]] double ratio() const;
    [[nodiscard]] DeckGeometry geometry() const;
    [[nodiscard]] DeckScene scene() const;
    [[nodiscard]] QPointF snap() const;

    QPointer<AppModel> m_model;
    int m_takeNumber = 1;
    bool m_moving = true;
    bool m_reducedMotion = false;
    bool m_hovered = false;
    double m_pressScale = 1;

    QPointer<QQuickWindow> m_watched;
    QMetaObject::Connection m_frames;
    QTimer m_seconds;  ///< Turns the clock on while no frames do.

    DeckState m_state;
    DeckMotion m_motion;
    Moment m_now;
    Moment m_listeningSince;
    bool m_wasUnseen = true;
    std::vector<float> m_heard;  ///< What the groove shows: the history as long as the platter is driven.
    Readout m_shown;             ///< What the latest frame showed.
    QString m_clock;

    DeckPainter m_painter;
    std::array<DeckPainter::Layer, 3> m_layers;
    QPointF m_snap;
};

}  // namespace vantiro
