// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/SettingsStore.h"

#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QTimer>
#include <QWindow>

#include <optional>

namespace vantiro {

/// Where the main window stood, kept across runs in a small file of the support folder. On platforms that tell no
/// window its place nothing is kept. Main thread only.
class WindowPlace final : public QObject {
    Q_OBJECT

public:
    /// The file's absolute path.
    explicit WindowPlace(const QString& file);
    ~WindowPlace() override;

    /// Moves the window to where it last stood, unless no screen shows that place any more, and follows it from here
    /// on. Comes before the window shows. The window may go before this object.
    void adopt(QWindow& window);

    /// The place, if enough of the window's strip would be on one of the screens to take hold of it.
    [[nodiscard]] static std::optional<QPoint> reachable(QPoint place, const QList<QRect>& screens);

private:
    void save();

    SettingsStore m_store;
    QTimer m_afterMove;  ///< A window that is dragged is written down when it rests.
    std::optional<QPoint> m_place;
};

}  // namespace vantiro
