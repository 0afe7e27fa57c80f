// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/SurfaceColours.h"
#include "app/paint/Typeface.h"

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QString>

namespace vantiro {

/// Colours, sizes, type and durations of the whole window; nothing in QML names one by its numbers. Durations are in
/// milliseconds and 0 while motion is reduced.
class Theme final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(QColor face MEMBER face CONSTANT)
    Q_PROPERTY(QColor raised MEMBER raised CONSTANT)
    Q_PROPERTY(QColor edge MEMBER edge CONSTANT)
    Q_PROPERTY(QColor well MEMBER well CONSTANT)
    Q_PROPERTY(QColor ink MEMBER ink CONSTANT)
    Q_PROPERTY(QColor body MEMBER body CONSTANT)
    Q_PROPERTY(QColor soft MEMBER soft CONSTANT)
    Q_PROPERTY(QColor dim MEMBER dim CONSTANT)
    Q_PROPERTY(QColor faint MEMBER faint CONSTANT)
    Q_PROPERTY(QColor off MEMBER off CONSTANT)
    Q_PROPERTY(QColor lime MEMBER lime CONSTANT)
    Q_PROPERTY(QColor amber MEMBER amber CONSTANT)
    Q_PROPERTY(QColor red MEMBER red CONSTANT)
    Q_PROPERTY(QColor redWord MEMBER redWord CONSTANT)
    Q_PROPERTY(QColor quiet MEMBER quiet CONSTANT)
    Q_PROPERTY(QColor fixedWord MEMBER fixedWord CONSTANT)
    Q_PROPERTY(QColor menuLine MEMBER menuLine CONSTANT)
    Q_PROPERTY(QColor capLampOut MEMBER capLampOut CONSTANT)
    Q_PROPERTY(QColor scribeDark MEMBER scribeDark CONSTANT)
    Q_PROPERTY(QColor scribeLight MEMBER scribeLight CONSTANT)
    Q_PROPERTY(QColor gripLight MEMBER gripLight CONSTANT)
    Q_PROPERTY(QColor bar MEMBER bar CONSTANT)
    Q_PROPERTY(QColor plateEnd MEMBER plateEnd CONSTANT)
    Q_PROPERTY(QColor plateFade MEMBER plateFade CONSTANT)
    Q_PROPERTY(QColor veil MEMBER veil CONSTANT)
    Q_PROPERTY(QColor selection MEMBER selection CONSTANT)

    Q_PROPERTY(QString family MEMBER family CONSTANT)
    Q_PROPERTY(int coachSize MEMBER coachSize CONSTANT)
    Q_PROPERTY(int clockSize MEMBER clockSize CONSTANT)
    Q_PROPERTY(int headingSize MEMBER headingSize CONSTANT)
    Q_PROPERTY(int takeSize MEMBER takeSize CONSTANT)
    Q_PROPERTY(int bigKeySize MEMBER bigKeySize CONSTANT)
    Q_PROPERTY(int sheetSize MEMBER sheetSize CONSTANT)
    Q_PROPERTY(int sourceSize MEMBER sourceSize CONSTANT)
    Q_PROPERTY(int rowSize MEMBER rowSize CONSTANT)
    Q_PROPERTY(int textSize MEMBER textSize CONSTANT)
    Q_PROPERTY(int helpSize MEMBER helpSize CONSTANT)
    Q_PROPERTY(int lineSize MEMBER lineSize CONSTANT)
    Q_PROPERTY(int legendSize MEMBER legendSize CONSTANT)
    Q_PROPERTY(double legendTracking MEMBER legendTracking CONSTANT)
    Q_PROPERTY(double markTracking MEMBER markTracking CONSTANT)

    Q_PROPERTY(int margin MEMBER margin CONSTANT)
    Q_PROPERTY(int stripHeight MEMBER stripHeight CONSTANT)
    Q_PROPERTY(int gap MEMBER gap CONSTANT)
    Q_PROPERTY(int keyRadius MEMBER keyRadius CONSTANT)
    Q_PROPERTY(int bigKeyRadius MEMBER bigKeyRadius CONSTANT)

    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(int keyDown READ keyDown NOTIFY reducedMotionChanged)
    Q_PROPERTY(int keyUp READ keyUp NOTIFY reducedMotionChanged)
    Q_PROPERTY(int lampOn READ lampOn NOTIFY reducedMotionChanged)
    Q_PROPERTY(int lampOff READ lampOff NOTIFY reducedMotionChanged)
    Q_PROPERTY(int toggle READ toggle NOTIFY reducedMotionChanged)
    Q_PROPERTY(int glass READ glass NOTIFY reducedMotionChanged)
    Q_PROPERTY(int resize READ resize NOTIFY reducedMotionChanged)

public:
    using QObject::QObject;

    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    void setReducedMotion(bool reducedMotion);

    [[nodiscard]] int keyDown() const { return lasting(60); }
    [[nodiscard]] int keyUp() const { return lasting(120); }
    [[nodiscard]] int lampOn() const { return lasting(80); }
    [[nodiscard]] int lampOff() const { return lasting(200); }
    [[nodiscard]] int toggle() const { return lasting(140); }
    [[nodiscard]] int glass() const { return lasting(150); }
    [[nodiscard]] int resize() const { return lasting(280); }

    const QColor face = palette::face;
    const QColor raised = palette::raised;
    const QColor edge = palette::edge;
    const QColor well = palette::well;
    const QColor ink = palette::ink;
    const QColor body = palette::body;
    const QColor soft = palette::soft;
    const QColor dim = palette::dim;
    const QColor faint = palette::faint;
    const QColor off = palette::off;
    const QColor lime = palette::lime;
    const QColor amber = palette::amber;
    const QColor red = palette::red;
    const QColor redWord = palette::redWord;
    const QColor quiet = palette::quiet;
    const QColor fixedWord = palette::fixedWord;
    const QColor menuLine = palette::menuLine;
    const QColor capLampOut = palette::capLampOut;
    const QColor scribeDark = palette::dark;
    const QColor scribeLight = palette::faded(palette::light, 0.05);
    const QColor gripLight = palette::faded(palette::light, 0.12);
    const QColor bar = palette::bar;  ///< What of a long list is in view.
    const QColor plateEnd = palette::plateGradient[1];
    const QColor plateFade = palette::faded(palette::plateGradient[1], 0);
    const QColor veil = palette::faded(palette::dark, 0.45);  ///< Over the window, behind a sheet.
    const QColor selection = palette::faint;

    const QString family = Typeface::family();
    const int coachSize = 34;
    const int clockSize = 32;
    const int headingSize = 28;
    const int takeSize = 22;
    const int bigKeySize = 19;
    const int sheetSize = 18;
    const int sourceSize = 16;
    const int rowSize = 15;
    const int textSize = 14;
    const int helpSize = 13;
    const int lineSize = 12;
    const int legendSize = 11;
    const double legendTracking = 1.2;
    const double markTracking = 4.2;

    const int margin = 20;
    const int stripHeight = 44;
    const int gap = 10;
    const int keyRadius = 5;
    const int bigKeyRadius = 8;

Q_SIGNALS:
    void reducedMotionChanged();

private:
    [[nodiscard]] int lasting(int milliseconds) const { return m_reducedMotion ? 0 : milliseconds; }

    bool m_reducedMotion = false;
};

}  // namespace vantiro
