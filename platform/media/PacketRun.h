// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// Encoded packets that follow each other, each as long as the codec's packets are but for the last of a take.
class PacketRun {
public:
    /// A run whose first packet will be the take's packet of this number.
    explicit PacketRun(std::int64_t first = 0) : m_first(first) { }

    /// The numbers of the first packet and of the one behind the last.
    [[nodiscard]] std::int64_t first() const { return m_first; }
    [[nodiscard]] std::int64_t end() const { return m_first + std::ssize(m_ends); }
    /// The packet of a number from first() to end().
    [[nodiscard]] std::span<const std::uint8_t> packet(std::int64_t number) const
    {
        const auto index = static_cast<std::size_t>(number - m_first);
        const std::size_t start = index > 0 ? m_ends[index - 1] : 0;
        return std::span(m_bytes).subspan(start, m_ends[index] - start);
    }

    void append(std::span<const std::uint8_t> packet)
    {
        m_bytes.insert(m_bytes.end(), packet.begin(), packet.end());
        m_ends.push_back(m_bytes.size());
    }

private:
    std::int64_t m_first;
    std::vector<std::uint8_t> m_bytes;
    std::vector<std::size_t> m_ends;
};

}  // namespace vantiro
