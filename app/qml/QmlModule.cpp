// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/QmlModule.h"

#include "app/paint/Typeface.h"
#include "core/foundation/Log.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlEngine>

// Generated. Named, so that the linker keeps the registration of the types, which nothing else refers to.
extern void qml_register_types_Vantiro();

namespace vantiro {

void installQmlModule(QQmlEngine& engine)
{
    [[maybe_unused]] const volatile auto keep = &qml_register_types_Vantiro;
    if (!Typeface::install()) {
        logLine(QStringLiteral("The window's font could not be read; the desktop's own stands in."));
    }
    QFont font(Typeface::family());
    font.setPixelSize(13);
    font.setWeight(QFont::Medium);
    QGuiApplication::setFont(font);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
}

}  // namespace vantiro
