// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"

#include <QObject>

namespace vantiro {

/// Whether anybody on the desktop shows tray items. Main thread only.
class TrayHost final : public QObject {
    Q_OBJECT

public:
    /// The link is the session bus; it may be absent, and else outlives this.
    explicit TrayHost(BusLink* session);

    [[nodiscard]] bool isThere() const { return m_isThere; }

Q_SIGNALS:
    /// After a host that was replaced by another, the items have to be handed in anew: it goes, and comes.
    void changed();

private:
    void ask();
    void note(bool isThere);

    BusLink* m_session;
    bool m_isThere = false;
};

}  // namespace vantiro
