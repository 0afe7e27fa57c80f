// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Surface.h"

#include "app/qml/PictureCache.h"

namespace vantiro {

void Surface::setRecipe(Recipe recipe)
{
    if (m_recipe != recipe) {
        m_recipe = recipe;
        repaint();
        Q_EMIT changed();
    }
}

void Surface::setHover(double hover)
{
    if (m_hover != hover) {
        m_hover = hover;
        repaint();
        Q_EMIT changed();
    }
}

void Surface::setPress(double press)
{
    if (m_press != press) {
        m_press = press;
        repaint();
        Q_EMIT changed();
    }
}

void Surface::setDisabled(bool disabled)
{
    if (m_disabled != disabled) {
        m_disabled = disabled;
        repaint();
        Q_EMIT changed();
    }
}

Picture Surface::pictureOf(State state, double ratio) const
{
    const QString key = QStringLiteral("surface %1 %2 %3x%4 %5")
                            .arg(int(m_recipe))
                            .arg(int(state))
                            .arg(width())
                            .arg(height())
                            .arg(ratio);
    return cachedPicture(key, [&] { return surfacePicture(size(), look(m_recipe, state), ratio); });
}

Picture Surface::picture(double ratio) const
{
    if (m_disabled) {
        return pictureOf(State::disabled, ratio);
    }
    Picture shown;
    if (m_press < 1) {
        shown = pictureOf(State::rest, ratio);
        if (m_hover > 0) {
            shown = crossfade(shown, pictureOf(State::hovered, ratio), m_hover);
        }
    }
    return m_press > 0 ? crossfade(shown, pictureOf(State::pressed, ratio), m_press) : shown;
}

}  // namespace vantiro
