// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QColor>
#include <QPainterPath>
#include <QQmlEngine>
#include <QString>

namespace vantiro {

/// One line of text that an ordinary text item cannot set: engraved into the plate, or with all digits equally wide, so
/// that a running clock stands still. The item is as large as the text.
class PaintedText : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER m_text NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(int pixelSize MEMBER m_pixelSize NOTIFY changed)
    Q_PROPERTY(int weight MEMBER m_weight NOTIFY changed)
    Q_PROPERTY(double tracking MEMBER m_tracking NOTIFY changed)
    Q_PROPERTY(Finish finish MEMBER m_finish NOTIFY changed)
    Q_PROPERTY(Digits digits MEMBER m_digits NOTIFY changed)

public:
    enum Finish {
        Printed,
        Engraved,
    };
    Q_ENUM(Finish)

    enum Digits {
        Proportional,
        Tabular,
    };
    Q_ENUM(Digits)

    explicit PaintedText(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    [[nodiscard]] QPainterPath words(QPointF place) const;
    void measure();

    QString m_text;
    QColor m_color;
    int m_pixelSize = 13;
    int m_weight = 500;
    double m_tracking = 0;
    Finish m_finish = Printed;
    Digits m_digits = Proportional;
};

}  // namespace vantiro
