// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/GraphClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace vantiro {

namespace {

    /// A driver whose cycles the clock under test sees, with the account that a capture keeps of its sample times.
    class Driver {
    public:
        void runFor(double seconds)
        {
            for (int cycles = static_cast<int>(seconds / cycleSeconds()); cycles > 0; --cycles) {
                run();
            }
        }

        void run()
        {
            const double jitter = std::uniform_real_distribution(0.0, 1.0)(m_random) * jitterSeconds * 1e9;
            m_wakeUp += 20'000;
            cycle.nanoseconds = static_cast<std::uint64_t>(std::max(m_nanoseconds + jitter, m_wakeUp));
            const double time = m_clock.advance(cycle);
            ASSERT_GE(time, 0) << "a capture would take it for the time before its first block";
            if (m_expected >= 0 && std::abs(time - m_expected) >= 1) {
                ++gaps;
                lost += std::max(static_cast<std::int64_t>(time - m_expected), std::int64_t{0});
            }
            m_expected = time + static_cast<double>(cycle.duration);
            cycle.position += cycle.duration;
            m_nanoseconds += cycleSeconds() * 1e9;
        }

        /// Time goes on by itself, or with the position.
        void lose(double seconds, std::uint64_t admitted = 0)
        {
            m_nanoseconds += seconds * 1e9;
            cycle.position += admitted;
        }

        /// The next wake-up comes late; the cycles that were due by then follow at once.
        void wakeLate(double seconds) { m_wakeUp = m_nanoseconds + seconds * 1e9; }

        CycleClock cycle{.clockId = 40, .position = 1'000'000'000, .duration = 1024, .nanoseconds = 0, .rate = 48'000};
        double partsPerMillion = 0;  ///< By which a frame takes longer than its rate says.
        double jitterSeconds = 0;
        int gaps = 0;
        std::int64_t lost = 0;

    private:
        [[nodiscard]] double cycleSeconds() const
        {
            return static_cast<double>(cycle.duration) / cycle.rate * (1 + partsPerMillion / 1e6);
        }

        GraphClock m_clock;
        std::mt19937 m_random{3};
        double m_nanoseconds = 5e12;
        double m_wakeUp = 0;
        double m_expected = -1;
    };

    struct Case {
        const char* name;
        std::function<void(Driver&)> happens;
        int gaps = 0;
        std::int64_t lost = 0;
    };

    void check(const std::vector<Case>& cases)
    {
        for (const auto& [name, happens, gaps, lost] : cases) {
            SCOPED_TRACE(name);
            Driver driver;
            driver.runFor(3);
            happens(driver);
            driver.run();
            driver.cycle.linksChanged = false;
            driver.runFor(10);
            EXPECT_EQ(driver.gaps, gaps);
            EXPECT_EQ(driver.lost, lost);
        }
    }

    std::function<void(Driver&)> jump(std::int64_t frames, bool linksChanged = false)
    {
        return [=](Driver& driver) {
            driver.cycle.position += static_cast<std::uint64_t>(frames);
            driver.cycle.linksChanged = linksChanged;
        };
    }

    std::function<void(Driver&)> quantum(std::uint64_t duration, std::int64_t frames)
    {
        return [=](Driver& driver) {
            driver.cycle.duration = duration;
            jump(frames)(driver);
        };
    }

    /// What happens to the cycle, and three tenths of a second beside it.
    std::function<void(Driver&)> become(CycleClock cycle)
    {
        return [=](Driver& driver) {
            driver.cycle = cycle;
            driver.lose(0.3);
        };
    }

}  // namespace

TEST(GraphClockTest, CountsWhatTheDriverAdmits)
{
    check({
        {"nothing happens", [](Driver&) {}},
        {"one frame", jump(1), 1, 1},
        {"two seconds, and the time with them", [](Driver& driver) { driver.lose(1.984, 95'232); }, 1, 95'232},
        {"backward", jump(-480), 1, 0},
        {"backward as a link comes", jump(-480, true)},
        {"forward as a link comes", jump(480, true), 1, 480},
        {"back to the beginning, and then a frame",
            [](Driver& driver) {
                driver.cycle.position = 0;
                driver.run();
                driver.cycle.position += 1;
            },
            2, 1},
    });
}

TEST(GraphClockTest, CountsNothingWhereClocksCannotBeCompared)
{
    check({
        {"quantum grows, with a smaller jump", quantum(2048, 1024)},
        {"quantum shrinks, with a smaller jump", quantum(256, 768)},
        {"quantum changes, with a backward jump", quantum(512, -500)},
        {"quantum changes, with a larger jump", quantum(256, 1024), 1, 1024},
        {"quantum shrinks, and the time goes on by the old one once more",
            [](Driver& driver) {
                driver.cycle.duration = 256;
                driver.run();
                driver.lose(0.016);
            }},
        {"another driver", become({.clockId = 41, .position = 123'456, .duration = 1024, .rate = 48'000})},
        {"another rate", become({.clockId = 40, .position = 99, .duration = 1024, .rate = 44'100})},
        {"unlinked, and others start and stop",
            [](Driver& driver) {
                driver.cycle.linked = false;
                for (int round = 0; round < 3; ++round) {
                    driver.lose(0.7, 4'321);
                    driver.runFor(1);
                }
                driver.cycle.linked = true;
            }},
    });
}

TEST(GraphClockTest, FindsWhatTheDriverHides)
{
    check({
        {"a tenth of a second, once it has lasted",
            [](Driver& driver) {
                driver.lose(0.1);
                driver.runFor(0.45);
                EXPECT_EQ(driver.gaps, 0);
                driver.runFor(0.1);
                EXPECT_EQ(driver.gaps, 1);
            },
            1, 4'800},
        {"twice within the wait",
            [](Driver& driver) {
                driver.lose(0.1);
                driver.runFor(0.2);
                driver.lose(0.05);
            },
            2, 7'200},
        {"beside an admitted one",
            [](Driver& driver) {
                driver.lose(0.1);
                driver.runFor(1);
                driver.cycle.position += 100;
            },
            2, 4'900},
        {"as short as a late wake-up", [](Driver& driver) { driver.lose(0.01); }},
        {"more frames than time", [](Driver& driver) { driver.lose(-0.1); }},
    });
    for (const double partsPerMillion : {-300.0, 300.0}) {
        Driver driver;
        driver.partsPerMillion = partsPerMillion;
        driver.jitterSeconds = 0.002;
        driver.runFor(60);
        driver.lose(0.1);
        driver.runFor(60);
        EXPECT_EQ(driver.gaps, 1);
        EXPECT_NEAR(static_cast<double>(driver.lost), 4'800, 150);
    }
}

TEST(GraphClockTest, IsNotMisledByDriftAndLateWakeUps)
{
    // An hour for each quantum but the smallest, which has many more cycles.
    for (const auto& [frames, rounds] : {std::pair{64U, 20}, {1024U, 360}, {8192U, 360}}) {
        for (const double partsPerMillion : {-300.0, 300.0}) {
            Driver driver;
            driver.cycle.duration = frames;
            driver.partsPerMillion = partsPerMillion;
            for (int round = 0; round < rounds; ++round) {
                driver.runFor(10);
                driver.wakeLate(0.005 * (1 + round % 10));
            }
            EXPECT_EQ(driver.gaps, 0) << frames << " frames, " << partsPerMillion << " ppm";
        }
    }
}

}  // namespace vantiro
