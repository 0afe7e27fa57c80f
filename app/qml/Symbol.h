// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QColor>
#include <QQmlEngine>

namespace vantiro {

/// A small drawing in one colour, as the font has none: it fills or strokes paths on a grid of 16 by 16 points.
class Symbol : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Shape shape MEMBER m_shape NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)

public:
    enum Shape {
        None,
        Record,
        Stop,
        Play,
        Pause,
        UpDown,
        Speaker,
        More,
        Share,
        Check,
        Warning,
        Cross,
        Plus,
        Minus,
        Minimise,
        Close,
    };
    Q_ENUM(Shape)

    explicit Symbol(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    Shape m_shape = None;
    QColor m_color;
};

}  // namespace vantiro
