// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QQmlEngine>

namespace vantiro {

/// A lamp: a light pipe, which is a bar, or a round lens. It goes on and off as `level` goes between 0 and 1, and
/// always has a word beside it that says the same.
class Lamp : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Form form READ form WRITE setForm NOTIFY changed)
    Q_PROPERTY(Light light READ light WRITE setLight NOTIFY changed)
    Q_PROPERTY(double level READ level WRITE setLevel NOTIFY changed)

public:
    enum Form {
        Pipe,
        Lens,
    };
    Q_ENUM(Form)

    enum Light {
        Lime,
        Amber,
        Red,
    };
    Q_ENUM(Light)

    using PictureItem::PictureItem;

    /// The look of a lamp that is lit.
    [[nodiscard]] static SurfaceLook lit(Form form, Light light);
    /// The look of a lamp that is out.
    [[nodiscard]] static SurfaceLook out(Form form);

    [[nodiscard]] Form form() const { return m_form; }
    void setForm(Form form);

    [[nodiscard]] Light light() const { return m_light; }
    void setLight(Light light);

    /// 0 out to 1 lit.
    [[nodiscard]] double level() const { return m_level; }
    void setLevel(double level);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    Form m_form = Pipe;
    Light m_light = Lime;
    double m_level = 0;
};

}  // namespace vantiro
