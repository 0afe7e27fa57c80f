// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

#include <map>

namespace vantiro {

/// What the user's desktop says of how programs should look. The settings portal is asked, then GNOME's settings
/// service, then KDE's file; motion is reduced as soon as one of them wants it so, since a setting that nobody touched
/// reads like a wish for motion. VANTIRO_REDUCE_MOTION=1 or =0 in the environment counts before all of them. Without a
/// desktop motion stays. Nothing here waits; changes are followed. Main thread only.
class Appearance final : public QObject {
    Q_OBJECT

public:
    /// The link is the session bus; it may be absent, and else outlives this.
    explicit Appearance(BusLink* session);

    [[nodiscard]] bool reducedMotion() const;

Q_SIGNALS:
    void reducedMotionChanged();

private:
    enum class Asker {
        portalReducedMotion,
        portalAnimations,
        settingsService,
        kde,
    };

    void askPortal();
    void askSettingsService();
    void readKdeFile();
    void note(Asker asker, bool wantsLess);

    BusLink* m_session;
    std::map<Asker, bool> m_wants;
    QFileSystemWatcher m_files;
};

}  // namespace vantiro
