// SPDX-License-Identifier: GPL-3.0-or-later
// What a turning picture costs in any Qt Quick window: as large as the deck's record, 24 times a second, and nothing
// else. bench/window measures it beside the application.
#include <QGuiApplication>
#include <QPainter>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>

namespace {

using namespace Qt::StringLiterals;

constexpr int side = 244;
constexpr double turnsPerSecond = 100.0 / 3 / 60;
constexpr int framesPerSecond = 24;

/// A record with its grooves.
class Record final : public QQuickImageProvider {
public:
    explicit Record(double scale) : QQuickImageProvider(QQuickImageProvider::Image), m_scale(scale) { }

    QImage requestImage(const QString& /*id*/, QSize* size, const QSize& /*wanted*/) override
    {
        const int pixels = qRound(side * m_scale);
        QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(QColor(21, 24, 21));
        painter.drawEllipse(image.rect());
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QColor(60, 70, 60));
        for (int inset = 4; inset < pixels / 2 - 4; inset += 4) {
            painter.drawArc(image.rect().adjusted(inset, inset, -inset, -inset), inset * 37 * 16, 300 * 16);
        }
        *size = image.size();
        return image;
    }

private:
    double m_scale;
};

}  // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    QQuickView view;
    view.setTitle(u"Peer"_s);
    view.setColor(QColor(11, 13, 11));
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(480, 580);
    view.engine()->addImageProvider(u"record"_s, new Record(application.devicePixelRatio()));
    QQmlComponent component(view.engine());
    component.setData("import QtQuick\nItem { Image { objectName: 'record'; anchors.centerIn: parent; "
                      "source: 'image://record/record'; width: 244; height: 244; smooth: true } }",
        QUrl());
    auto* const content = component.create();
    auto* const record = content == nullptr ? nullptr : content->findChild<QQuickItem*>(u"record"_s);
    if (record == nullptr) {
        return 1;
    }
    view.setContent({}, &component, content);
    view.show();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, record,
        [record] { record->setRotation(record->rotation() + 360 * turnsPerSecond / framesPerSecond); });
    timer.start(1000 / framesPerSecond);
    return QGuiApplication::exec();
}
