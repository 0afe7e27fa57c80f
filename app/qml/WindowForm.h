// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QRect>
#include <QSize>
#include <QTimer>
#include <QVariantAnimation>
#include <QWindow>

namespace vantiro {

/// Holds a window to the form that it shows: another form makes it that large, over `duration`, keeping its top edge
/// and its horizontal centre where the platform places windows as asked. Between two forms the user makes it as large
/// as he likes, but never smaller. A window that fills the screen stays so.
class WindowForm : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QWindow* window MEMBER m_window NOTIFY windowChanged REQUIRED)
    Q_PROPERTY(QSizeF size READ size WRITE setSize NOTIFY sizeChanged)
    Q_PROPERTY(int duration MEMBER m_duration NOTIFY durationChanged)
    Q_PROPERTY(bool moving READ moving NOTIFY movingChanged)

public:
    explicit WindowForm(QObject* parent = nullptr);
    ~WindowForm() override;

    [[nodiscard]] QSizeF size() const { return m_size; }
    void setSize(QSizeF size);
    /// On the way from one form to the other.
    [[nodiscard]] bool moving() const { return m_moving; }

    /// Where a window at `now` stands as a window of `size`: moved sideways into `screen` if it would leave it and
    /// stood in it.
    [[nodiscard]] static QRect placed(const QRect& now, QSize size, const QRect& screen);

    void classBegin() override { }
    void componentComplete() override;

Q_SIGNALS:
    void windowChanged();
    void sizeChanged();
    void durationChanged();
    void movingChanged();

private:
    void setMoving(bool moving);
    void follow();
    void step(double share);
    void arrive();
    void settle();

    QWindow* m_window = nullptr;
    QSizeF m_size;
    int m_duration = 0;
    bool m_complete = false;
    bool m_moving = false;
    QRect m_from;
    QRect m_to;
    QVariantAnimation m_animation;
    QTimer m_patience;
};

}  // namespace vantiro
