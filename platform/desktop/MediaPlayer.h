// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

struct sd_bus_slot;

namespace vantiro {

/// What is playing, for the desktop. Times are in microseconds.
struct MediaContent {
    QString title = {};
    QString artist = {};  ///< Empty for none.
    QString album = {};
    QString artUrl = {};  ///< Of the picture; empty for none.
    std::int64_t length = 0;
    int track = 1;  ///< Another number for each thing that is put on.
    bool isPaused = false;

    bool operator==(const MediaContent&) const = default;
};

/// A player that the desktop shows and that media keys reach (MPRIS), there only while something is on it. What it is
/// asked is told and nothing else: what comes of it is shown to it. Main thread only.
class MediaPlayer final : public QObject {
    Q_OBJECT

public:
    /// The link is the session bus and outlives this; it may be absent. `position` is asked whenever somebody wants to
    /// know where the player is.
    MediaPlayer(BusLink* session, std::function<std::int64_t()> position);
    ~MediaPlayer() override;

    /// What is on the player from here on; without it the player is gone.
    void show(const std::optional<MediaContent>& content);
    /// The position is another one than time alone would have made it.
    void tellSought();

    /// Something is on it.
    [[nodiscard]] bool isThere() const { return m_isThere; }
    [[nodiscard]] const MediaContent& content() const { return m_content; }
    /// Never below 0, nor behind the length.
    [[nodiscard]] std::int64_t position() const;
    /// What the desktop calls that which is on the player.
    [[nodiscard]] QString trackPath() const;

Q_SIGNALS:
    void toggleWanted();
    void playWanted();
    void pauseWanted();
    void stopWanted();
    /// To this position of what is on the player, which lies within it.
    void seekWanted(std::int64_t position);
    void raiseWanted();
    void quitWanted();

private:
    void publish();
    void requestName(const QByteArray& name);
    void releaseName();

    BusLink* m_session;
    std::function<std::int64_t()> m_position;
    sd_bus_slot* m_root = nullptr;
    sd_bus_slot* m_player = nullptr;
    MediaContent m_content;
    bool m_isThere = false;
    int m_appearance = 0;  ///< Counts what showed or hid the player: answers to an earlier one come too late.
    QByteArray m_name;     ///< On the bus, asked for or owned; empty without one.
};

}  // namespace vantiro
