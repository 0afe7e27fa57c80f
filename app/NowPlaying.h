// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/DeckPlayback.h"
#include "platform/desktop/MediaPlayer.h"

#include <QObject>
#include <QTimer>

namespace vantiro {

/// The take on the deck as the desktop shows it, and what the desktop's keys for players do. Main thread only.
class NowPlaying final : public QObject {
    Q_OBJECT

public:
    /// The link is the session bus; it may be absent. All outlive this.
    NowPlaying(AppModel& model, DeckPlayback& playback, Scheduler& scheduler, BusLink* session);

Q_SIGNALS:
    void raiseWanted();
    void quitWanted();

private:
    void followModel();
    void followKeys();
    void update();
    void makePicture();

    AppModel& m_model;
    DeckPlayback& m_playback;
    Scheduler& m_scheduler;
    MediaPlayer m_player;
    QTimer m_update;  ///< Gathers what changes at once: a take that replaces another never leaves the deck in between.
    int m_takes = 0;  ///< That were put on the deck in this run.
    bool m_hasPicture = false;  ///< It has been made, or tried to.
    QString m_pictureUrl;
};

}  // namespace vantiro
