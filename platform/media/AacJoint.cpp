// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/AacJoint.h"

#include <algorithm>
#include <cstddef>

namespace vantiro::AacJoint {

namespace {

    std::uint32_t bitsAt(std::span<const std::uint8_t> bytes, std::size_t place, std::size_t count)
    {
        std::uint32_t value = 0;
        for (std::size_t bit = place; bit < place + count; ++bit) {
            value = value << 1U | (bytes[bit / 8] >> (7 - bit % 8) & 1U);
        }
        return value;
    }

    /// Sequence and shape of the one window of a packet, as they stand there; nothing if its channels have one each.
    std::optional<std::uint32_t> windowOf(std::span<const std::uint8_t> packet)
    {
        constexpr std::uint32_t singleChannel = 0;
        constexpr std::uint32_t channelPair = 1;
        constexpr std::size_t identifierBits = 3;
        constexpr std::size_t tagBits = 4;
        constexpr std::size_t gainBits = 8;
        constexpr std::size_t windowBits = 3;  // Two of the sequence, one of the shape.
        constexpr std::size_t leastBytes = 4;
        if (packet.size() < leastBytes) {
            return std::nullopt;
        }
        const std::uint32_t element = bitsAt(packet, 0, identifierBits);
        const std::size_t place = identifierBits + tagBits;
        if (element == singleChannel) {
            return bitsAt(packet, place + gainBits + 1, windowBits);
        }
        const bool sharesOne = element == channelPair && bitsAt(packet, place, 1) == 1;
        return sharesOne ? std::optional(bitsAt(packet, place + 2, windowBits)) : std::nullopt;
    }

}  // namespace

std::optional<std::int64_t> find(const PacketRun& before, const PacketRun& after, std::int64_t first, std::int64_t last)
{
    const std::int64_t earliest = std::max({first, before.first() + 1, after.first() + 1});
    const std::int64_t latest = std::min({last, before.end(), after.end() - 1});
    for (std::int64_t number = earliest; number <= latest; ++number) {
        const auto window = windowOf(before.packet(number - 1));
        if (window && window == windowOf(after.packet(number - 1))) {
            return number;
        }
    }
    return std::nullopt;
}

}  // namespace vantiro::AacJoint
