// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>

#include <chrono>
#include <vector>

namespace vantiro {

/// The beat to which everything that follows a level is painted, 24 times a second at most and for all at once: two
/// items that change together cost one frame of the window. It beats only while somebody has asked for the next beat,
/// so nothing runs while nothing changes. Main thread only.
class PaintTick {
public:
    using Moment = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::nanoseconds period{1'000'000'000 / 24};

    /// Who is painted. It must leave before it goes.
    class Client {
    public:
        virtual void paintTick(Moment now) = 0;

    protected:
        ~Client() = default;
    };

    PaintTick();

    PaintTick(const PaintTick&) = delete;
    PaintTick& operator=(const PaintTick&) = delete;

    /// The one that all items of the program share.
    [[nodiscard]] static PaintTick& shared();

    /// Asks for the next beat, once; asking again before it comes changes nothing.
    void ask(Client& client);
    void leave(Client& client);

private:
    void beat();

    QTimer m_timer;
    Moment m_due;
    std::vector<Client*> m_waiting;
    std::vector<Client*> m_served;
};

}  // namespace vantiro
