// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/GalleryWindow.h"

#include "app/qml/QmlModule.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QImage>
#include <QQmlEngine>
#include <QQuickView>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <chrono>

namespace vantiro::GalleryWindow {

namespace {

    int fail(const QString& sentence)
    {
        QTextStream(stderr) << sentence << '\n';
        return 1;
    }

}  // namespace

void prepare(const StartArguments& arguments)
{
    if (arguments.picture.isEmpty()) {
        return;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", QByteArray::number(arguments.scale));
}

int run(const StartArguments& arguments)
{
    QQuickView view;
    installQmlModule(*view.engine());
    view.setTitle(QStringLiteral("Vantiro: gallery"));
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Vantiro/Gallery.qml")));
    if (view.status() != QQuickView::Ready) {
        return fail(QStringLiteral("The gallery could not be opened."));
    }
    view.show();
    if (arguments.picture.isEmpty()) {
        return QCoreApplication::exec();
    }
    // There is nothing to take before the first frame stands.
    QEventLoop loop;
    QObject::connect(&view, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
    QTimer::singleShot(std::chrono::seconds(10), &loop, &QEventLoop::quit);
    loop.exec();
    const QImage picture = view.grabWindow();
    if (picture.isNull() || !picture.save(arguments.picture, "PNG")) {
        return fail(QStringLiteral("%1 could not be written.").arg(arguments.picture));
    }
    return 0;
}

}  // namespace vantiro::GalleryWindow
