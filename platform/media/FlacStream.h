// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCryptographicHash>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// Makes one FLAC stream (RFC 9639) of frames that were encoded apart: the same bytes as if one encoder had made it.
/// Frames depend on nothing before them but their own number. One thread at a time.
class FlacStream {
public:
    static constexpr std::size_t streamInfoBytes = 34;

    /// `streamInfo` is what an encoder says before its first frame, streamInfoBytes long.
    FlacStream(std::span<const std::uint8_t> streamInfo, int channels);

    /// The frame with another number, from 0 to 2^31 - 1, in order. Valid until the next call. Nothing if these bytes
    /// are no frame.
    [[nodiscard]] std::span<const std::uint8_t> add(std::span<const std::uint8_t> frame, std::int64_t number);
    /// Samples of the stream as 24-bit integers, little endian, interleaved, in order.
    void addSamples(std::span<const std::byte> packed);
    /// What the header of the finished stream says: sizes of frames, length, and the MD5 of all samples.
    [[nodiscard]] std::vector<std::uint8_t> streamInfo() const;

private:
    std::vector<std::uint8_t> m_streamInfo;
    std::size_t m_frameBytes;  ///< Of a frame of samples.
    std::vector<std::uint8_t> m_frame;
    std::size_t m_smallest = 0;
    std::size_t m_largest = 0;
    std::int64_t m_frames = 0;
    QCryptographicHash m_hash{QCryptographicHash::Md5};
};

}  // namespace vantiro
