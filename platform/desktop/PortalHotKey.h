// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"
#include "platform/desktop/HotKey.h"

#include <QString>

#include <memory>

namespace vantiro {

/// The hot key as the desktop's portal grants it: the user may be asked, and may choose other keys. It has a connection
/// of its own, and the portal forgets it with that. Without the portal, or where the user says no, there is none: the
/// log says so, once a run.
class PortalHotKey final : public HotKey {
    Q_OBJECT

public:
    /// Asks the portal. Nothing if there is no session bus.
    [[nodiscard]] static std::unique_ptr<PortalHotKey> make();
    ~PortalHotKey() override;

private:
    /// What the portal answers to; it calls back with a signal of an object that is named by the asker.
    struct Request {
        QString token;
        QString path;
    };

    explicit PortalHotKey(std::unique_ptr<BusLink> link);
    /// Empty without a bus.
    [[nodiscard]] Request newRequest();
    void introduce();
    void createSession();
    void bind();
    void ask(const BusMessage& call, const Request& request, void (PortalHotKey::*next)());

    std::unique_ptr<BusLink> m_link;
    int m_requests = 0;
    QByteArray m_session;  ///< The object that the portal keeps for it.
};

}  // namespace vantiro
