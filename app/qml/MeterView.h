// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/MeterPainter.h"
#include "app/qml/LevelPicture.h"

#include <QQmlEngine>

namespace vantiro {

/// Two bars of cells that show the model's level, with scale and readout unless `compact`. For a screen reader it is
/// one element with a value in words.
class MeterView : public vantiro::LevelPicture {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool compact READ compact WRITE setCompact NOTIFY compactChanged)
    Q_PROPERTY(int segments READ segments WRITE setSegments NOTIFY segmentsChanged)
    Q_PROPERTY(QString value READ value NOTIFY valueChanged)

public:
    explicit MeterView(QQuickItem* parent = nullptr);

    [[nodiscard]] bool compact() const { return m_compact; }
    void setCompact(bool compact);

    [[nodiscard]] int segments() const { return m_segments; }
    void setSegments(int segments);

    /// Both levels in words, as a screen reader says them; told once a second at most.
    [[nodiscard]] const QString& value() const { return m_value; }

Q_SIGNALS:
    void compactChanged();
    void segmentsChanged();
    void valueChanged();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;
    void componentComplete() override;
    void paintTick(PaintTick::Moment now) override;

private:
    void say(const char* property, const QString& words);
    [[nodiscard]] MeterPainter::Form form(double ratio) const;

    bool m_compact = false;
    int m_segments = 64;
    QString m_value;
    PaintTick::Moment m_valueTold;
    mutable MeterLevels m_shown;
    mutable MeterPainter m_painter;
};

}  // namespace vantiro
