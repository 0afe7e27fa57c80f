// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QQmlEngine>

namespace vantiro {

/// The line around what has the keyboard's attention. It fills its item.
class FocusRing : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY radiusChanged)

public:
    explicit FocusRing(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void radiusChanged();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    double m_radius = 9;
};

}  // namespace vantiro
