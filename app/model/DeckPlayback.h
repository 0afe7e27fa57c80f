// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "core/playback/TakePlayer.h"

#include <QCoreApplication>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro {

/// A take on the deck. It never begins during a take, whose recording could hear it, and it ends by itself with no
/// trace left in the model.
///
/// | state   | `playing` | `playbackPaused` |
/// |---------|-----------|------------------|
/// | idle    | absent    | no               |
/// | playing | the take  | no               |
/// | paused  | the take  | yes              |
///
/// Main thread only.
class DeckPlayback {
    Q_DECLARE_TR_FUNCTIONS(DeckPlayback)

public:
    DeckPlayback(AppModel& model, const ModelServices& services);
    ~DeckPlayback();

    DeckPlayback(const DeckPlayback&) = delete;
    DeckPlayback& operator=(const DeckPlayback&) = delete;

    /// Puts the take on the deck and plays it; pauses or goes on if it is the one that is on the deck. What stands in
    /// the way is shown.
    void play(const Take& take);
    void togglePause();
    /// To this fraction of the length. It never lands at the very end, where the take would seem to vanish under the
    /// hand.
    void seek(double fraction);
    /// That many seconds forwards, or backwards if negative.
    void step(double seconds);
    void stopPlayback();
    /// Goes on at the output that the user chose, anew if it is the same.
    void useOutput();

    /// The devices that a take can be heard on.
    [[nodiscard]] std::vector<AudioDevice> outputs() const;

private:
    using Opened = Result<std::shared_ptr<TakePlayer>>;
    using Moment = Scheduler::Moment;

    [[nodiscard]] bool takeIsNear() const;
    void opened(int request, const Take& take, const QString& output, Opened result);
    void begin(const Take& take);
    void showFailure(const Take& take);
    void expectSound();
    void tick();
    void followOutput();
    void traceSecond(double position);
    void readLevels();

    AppModel& m_model;
    ModelServices m_services;
    std::shared_ptr<TakePlayer> m_player;
    std::unique_ptr<Scheduler::Timer> m_timer;
    /// Of the take that is wanted: one that was asked for before is dropped, or not even opened.
    std::shared_ptr<std::atomic<int>> m_request = std::make_shared<std::atomic<int>>(0);
    std::optional<QString> m_opening;  ///< The file that is being opened.
    std::uint64_t m_cycles = 0;        ///< The player's, when they last grew.
    Moment m_lastCycle;                ///< When they last grew.
    Moment m_nextTry;                  ///< Not before this another output is opened.
    bool m_wasUnheard = false;         ///< Paused because nobody listened.
    std::optional<qint64> m_tracedSecond;
    Guard m_guard;
};

}  // namespace vantiro
