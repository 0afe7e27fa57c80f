// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vantiro::test {

using Planes = std::vector<std::vector<float>>;

/// A take whose samples stand in memory.
class MemoryTake final : public TakeReader {
public:
    enum class Access {
        parallel,
        inOrder,  ///< Fails if it is asked for anything but the next frames.
    };

    /// `planes` holds at least one channel, and all are as long as each other.
    MemoryTake(double sampleRate, Planes planes, Access access = Access::parallel)
        : m_planes(std::move(planes))
        , m_format{sampleRate, static_cast<int>(m_planes.size()), std::ssize(m_planes.front())}
        , m_access(access)
    { }

    /// What the header says, whatever there is.
    void setStatedFrames(std::int64_t frames) { m_format.frames = frames; }
    /// A read that reaches this frame fails.
    void setBrokenFrame(std::int64_t frame) { m_brokenFrame = frame; }

    [[nodiscard]] const Format& format() const override { return m_format; }
    [[nodiscard]] Result<std::int64_t> read(
        std::int64_t first, std::span<float* const> planes, std::int64_t frames) override
    {
        if (first <= m_brokenFrame && m_brokenFrame < first + frames) {
            return captureFailure(QStringLiteral("broken"));
        }
        if (m_access == Access::inOrder && std::exchange(m_next, first + frames) != first) {
            return captureFailure(QStringLiteral("out of order"));
        }
        const std::int64_t count = std::clamp<std::int64_t>(std::ssize(m_planes.front()) - first, 0, frames);
        for (std::size_t channel = 0; channel < m_planes.size(); ++channel) {
            std::copy_n(m_planes[channel].data() + (count > 0 ? first : 0), count, planes[channel]);
        }
        return count;
    }
    [[nodiscard]] bool isParallel() const override { return m_access == Access::parallel; }

private:
    Planes m_planes;
    Format m_format;
    Access m_access;
    std::int64_t m_brokenFrame = -1;
    std::int64_t m_next = 0;
};

}  // namespace vantiro::test
