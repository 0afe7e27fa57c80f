// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QQmlEngine>

namespace vantiro {

/// A record half drawn from an empty sleeve, 300 by 170: there is nothing on the shelf yet.
class SleevePicture : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit SleevePicture(QQuickItem* parent = nullptr);

protected:
    [[nodiscard]] Picture picture(double ratio) const override;
};

}  // namespace vantiro
