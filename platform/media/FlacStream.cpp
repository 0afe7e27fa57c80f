// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FlacStream.h"

#include "core/capture/PackedPcm.h"

#include <algorithm>
#include <bit>
#include <ranges>

extern "C" {
#include <libavutil/crc.h>
}

namespace vantiro {

namespace {

    // Places in a frame's header.
    constexpr std::size_t codesPlace = 2;
    constexpr std::size_t numberPlace = 4;
    constexpr std::size_t checksumBytes = 2;
    constexpr std::size_t shortestFrame = 10;

    /// Of a number in the longer form of UTF-8; 0 for what is none.
    std::size_t lengthOfNumber(std::uint8_t lead)
    {
        const auto ones = static_cast<std::size_t>(std::countl_one(lead));
        return ones == 0 ? 1 : (ones == 1 || ones > 7 ? 0 : ones);
    }

    void appendNumber(std::vector<std::uint8_t>& bytes, std::uint64_t number)
    {
        constexpr std::uint64_t shortForms = 0x80;
        constexpr int bitsFollowing = 6;
        if (number < shortForms) {
            bytes.push_back(static_cast<std::uint8_t>(number));
            return;
        }
        // Each byte that follows the lead has 6 bits; the lead has what its ones leave, 5 at the most.
        int following = 1;
        while (number >> static_cast<unsigned>(following * bitsFollowing + bitsFollowing - following) != 0) {
            ++following;
        }
        const auto ones = static_cast<std::uint8_t>(0xFF00U >> static_cast<unsigned>(following + 1));
        bytes.push_back(static_cast<std::uint8_t>(ones | number >> static_cast<unsigned>(following * bitsFollowing)));
        while (following-- > 0) {
            bytes.push_back(static_cast<std::uint8_t>(
                0x80U | (number >> static_cast<unsigned>(following * bitsFollowing) & 0x3FU)));
        }
    }

    /// Bytes between a frame's number and the checksum of its header.
    std::size_t optionalBytes(std::uint8_t codes)
    {
        const int block = codes >> 4;
        const int rate = codes & 0xF;
        const std::size_t blockBytes = block == 6 ? 1 : (block == 7 ? 2 : 0);
        const std::size_t rateBytes = rate == 12 ? 1 : (rate == 13 || rate == 14 ? 2 : 0);
        return blockBytes + rateBytes;
    }

    std::uint32_t checksum(AVCRCId id, std::span<const std::uint8_t> bytes)
    {
        return av_crc(av_crc_get_table(id), 0, bytes.data(), bytes.size());
    }

    void putBigEndian(std::span<std::uint8_t> out, std::uint64_t value)
    {
        for (std::uint8_t& byte : std::views::reverse(out)) {
            byte = static_cast<std::uint8_t>(value);
            value >>= 8U;
        }
    }

}  // namespace

FlacStream::FlacStream(std::span<const std::uint8_t> streamInfo, int channels)
    : m_streamInfo(streamInfo.begin(), streamInfo.end())
    , m_frameBytes(static_cast<std::size_t>(channels) * packedPcm::sampleBytes)
{ }

std::span<const std::uint8_t> FlacStream::add(std::span<const std::uint8_t> frame, std::int64_t number)
{
    const std::size_t oldLength = frame.size() < shortestFrame ? 0 : lengthOfNumber(frame[numberPlace]);
    const std::size_t behindNumber = numberPlace + oldLength;
    const std::size_t options = oldLength == 0 ? 0 : optionalBytes(frame[codesPlace]);
    if (oldLength == 0 || frame.size() < behindNumber + options + 1 + checksumBytes) {
        return {};
    }
    m_frame.assign(frame.begin(), frame.begin() + numberPlace);
    appendNumber(m_frame, static_cast<std::uint64_t>(number));
    const auto optionsBegin = frame.begin() + static_cast<std::ptrdiff_t>(behindNumber);
    const auto optionsEnd = optionsBegin + static_cast<std::ptrdiff_t>(options);
    m_frame.insert(m_frame.end(), optionsBegin, optionsEnd);
    m_frame.push_back(static_cast<std::uint8_t>(checksum(AV_CRC_8_ATM, m_frame)));
    m_frame.insert(m_frame.end(), optionsEnd + 1, frame.end() - checksumBytes);
    const std::uint32_t all = checksum(AV_CRC_16_ANSI, m_frame);
    // The library's register of this polynomial lies the other way round.
    m_frame.push_back(static_cast<std::uint8_t>(all));
    m_frame.push_back(static_cast<std::uint8_t>(all >> 8U));
    m_smallest = m_smallest == 0 ? m_frame.size() : std::min(m_smallest, m_frame.size());
    m_largest = std::max(m_largest, m_frame.size());
    return m_frame;
}

void FlacStream::addSamples(std::span<const std::byte> packed)
{
    m_hash.addData(QByteArrayView(packed.data(), static_cast<qsizetype>(packed.size())));
    m_frames += static_cast<std::int64_t>(packed.size() / m_frameBytes);
}

std::vector<std::uint8_t> FlacStream::streamInfo() const
{
    constexpr std::size_t smallestPlace = 4;
    constexpr std::size_t largestPlace = 7;
    constexpr std::size_t lengthPlace = 13;
    constexpr std::size_t hashPlace = 18;
    // Of the 36 bits of the length, the upper four share their byte with how wide samples are.
    constexpr std::uint64_t mostFrames = (std::uint64_t{1} << 36U) - 1;
    std::vector<std::uint8_t> info = m_streamInfo;
    putBigEndian(std::span(info).subspan(smallestPlace, 3), m_smallest);
    putBigEndian(std::span(info).subspan(largestPlace, 3), m_largest);
    const std::uint64_t width = info[lengthPlace] & 0xF0U;
    putBigEndian(std::span(info).subspan(lengthPlace, 5),
        width << 32U | std::min(static_cast<std::uint64_t>(m_frames), mostFrames));
    std::ranges::copy(m_hash.result(), info.begin() + hashPlace);
    return info;
}

}  // namespace vantiro
