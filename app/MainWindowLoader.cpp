// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MainWindowLoader.h"

#include "app/qml/QmlModule.h"
#include "core/foundation/Log.h"

#include <QQmlEngine>
#include <QUrl>
#include <QVariant>

namespace vantiro::MainWindowLoader {

using namespace Qt::StringLiterals;

Frame wantedFrame()
{
    return qgetenv("VANTIRO_FRAME") == "1" ? Frame::system : Frame::own;
}

QQuickWindow* load(QQmlApplicationEngine& engine, Desk& desk, Frame frame)
{
    installQmlModule(engine);
    engine.setInitialProperties({{u"desk"_s, QVariant::fromValue(&desk)}, {u"framed"_s, frame == Frame::system},
        {u"version"_s, QStringLiteral(VANTIRO_VERSION)}});
    engine.load(QUrl(u"qrc:/qt/qml/Vantiro/MainWindow.qml"_s));
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (window == nullptr) {
        logLine(u"The main window could not be made."_s);
    }
    return window;
}

Theme& theme(QQmlApplicationEngine& engine)
{
    return *engine.singletonInstance<Theme*>(qmlTypeId("Vantiro", 1, 0, "Theme"));
}

QIcon icon()
{
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(u":/icons/vantiro-%1.png"_s.arg(side), QSize(side, side));
    }
    return icon;
}

}  // namespace vantiro::MainWindowLoader
