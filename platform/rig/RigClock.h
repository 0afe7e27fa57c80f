// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vantiro {

/// The arithmetic of a virtual device's clock: when the next cycle is due, and what its position, time and content are.
/// It runs without drift for ever. One thread at a time; no allocation, no system call.
class RigClock {
public:
    static constexpr std::int64_t nsecPerSecond = 1'000'000'000;

    /// One cycle as the graph sees it.
    struct Cycle {
        std::int64_t position = 0;  ///< Frames of the clock.
        std::int64_t content = 0;   ///< First frame of the content.
        std::int64_t dueNsec = 0;   ///< CLOCK_MONOTONIC.
        std::int64_t nextNsec = 0;  ///< When the following cycle is due.
        int frames = 0;
        int rate = 0;  ///< Hz.

        bool operator==(const Cycle&) const = default;
    };

    RigClock(int rate, int quantum) noexcept : m_rate(rate), m_quantum(quantum) { }

    /// The next cycle is due at `nsec`; position and content go on where they are.
    void anchor(std::int64_t nsec) noexcept;
    /// When the next cycle is due.
    [[nodiscard]] std::int64_t dueNsec() const noexcept;
    /// Takes the next cycle.
    [[nodiscard]] Cycle advance() noexcept;
    /// Takes a cycle whose length somebody else decided; returns its first frame of content.
    [[nodiscard]] std::int64_t advanceBorrowed(int frames) noexcept;

    /// Whole frames that are due between the next cycle and `nsec`; 0 if it lies before.
    [[nodiscard]] std::int64_t framesDueBy(std::int64_t nsec) const noexcept;

    /// Position and content move by `frames`, the time does not.
    void jump(std::int64_t frames) noexcept;
    /// Content and time move by `frames`, the position does not.
    void overrun(std::int64_t frames) noexcept;
    /// The next cycle is due `frames` (0 or more) later than it was.
    void addTime(std::int64_t frames) noexcept;
    void restartPosition() noexcept { m_position = 0; }
    void setRate(int rate) noexcept;
    void setQuantum(int frames) noexcept { m_quantum = frames; }

    [[nodiscard]] int rate() const noexcept { return m_rate; }
    [[nodiscard]] int quantum() const noexcept { return m_quantum; }
    [[nodiscard]] std::int64_t content() const noexcept { return m_content; }

private:
    int m_rate;
    int m_quantum;
    std::int64_t m_position = 0;
    std::int64_t m_content = 0;
    // The next cycle is due m_frames frames (less than a second) after m_second.
    std::int64_t m_second = 0;
    std::int64_t m_frames = 0;
};

}  // namespace vantiro
