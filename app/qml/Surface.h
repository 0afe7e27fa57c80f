// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QQmlEngine>

namespace vantiro {

/// A piece of the faceplate: a plate that stands on it, a well milled into it, a key, what floats above. The light
/// comes from above: what is raised has its line of light on top, what is milled has it below.
class Surface : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Recipe recipe READ recipe WRITE setRecipe NOTIFY changed)
    Q_PROPERTY(double hover READ hover WRITE setHover NOTIFY changed)
    Q_PROPERTY(double press READ press WRITE setPress NOTIFY changed)
    Q_PROPERTY(bool disabled READ disabled WRITE setDisabled NOTIFY changed)

public:
    enum Recipe {
        Plate,
        Well,
        Key,
        BigKey,
        Foot,
        Sheet,
        Menu,
        MenuRow,
        ToolTip,
        ToggleWell,
        ToggleCap,
        PickerWell,
        PickerKey,
        Rail,
        RailCap,
    };
    Q_ENUM(Recipe)

    /// How a surface is just being treated.
    enum class State {
        rest,
        hovered,
        pressed,
        disabled,
    };

    using PictureItem::PictureItem;

    /// The look of a recipe in one state; a recipe without that state looks as it does at rest.
    [[nodiscard]] static SurfaceLook look(Recipe recipe, State state);

    [[nodiscard]] Recipe recipe() const { return m_recipe; }
    void setRecipe(Recipe recipe);

    /// 0 at rest to 1 under the pointer.
    [[nodiscard]] double hover() const { return m_hover; }
    void setHover(double hover);

    /// 0 up to 1 down.
    [[nodiscard]] double press() const { return m_press; }
    void setPress(double press);

    [[nodiscard]] bool disabled() const { return m_disabled; }
    void setDisabled(bool disabled);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    [[nodiscard]] Picture pictureOf(State state, double ratio) const;

    Recipe m_recipe = Plate;
    double m_hover = 0;
    double m_press = 0;
    bool m_disabled = false;
};

}  // namespace vantiro
