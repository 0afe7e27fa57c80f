// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/graph/GraphTest.h"

#include <cstdint>

namespace vantiro::test {

/// Kills recorders (SIGKILL) at random moments and looks at what they leave.
class KillTest : public GraphTest {
protected:
    /// Records so many takes one after the other, each killed 0.3 to 3 seconds after it began. Expects of each that it
    /// opens as it is and lacks 0.7 seconds at most, and that the next start mends it, so that it lacks 0.2 seconds at
    /// most; and that each sample in it is right. On a real disk, which others may keep busy, three times as much may
    /// be missing.
    void killRecorders(int rounds, std::uint32_t seed);

private:
    struct Killed {
        QString path;
        std::int64_t played = 0;  ///< The frame that the device had come to.
        std::int64_t frames = 0;  ///< What the file told as it was left.
    };

    [[nodiscard]] static Killed killOne(const VirtualDevice& card, const QString& path, double moment);
    /// Expects that the programs which people use open it too.
    static void expectOtherReadersOpen(const QString& path);
    void expectMended(const Killed& killed) const;

    double m_patience = 1;  ///< Factor to what may be missing.
};

}  // namespace vantiro::test
