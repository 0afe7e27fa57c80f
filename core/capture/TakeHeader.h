// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vantiro {

/// What a take's header says apart from its length.
struct TakeShape {
    TakeFormat format = TakeFormat::caf;
    double sampleRate = 0;  ///< Hz, above 0 and finite. WAV has whole numbers only, the nearest is written.
    int channels = 0;       ///< 1 to maxChannels.

    static constexpr int maxChannels = 21845;  ///< A WAV frame is counted in 16 bits.

    /// Bytes of one frame: three a channel.
    [[nodiscard]] std::int64_t frameBytes() const { return std::int64_t{3} * channels; }
    /// The header can be written.
    [[nodiscard]] bool isValid() const;

    bool operator==(const TakeShape&) const = default;
};

/// The most audio that a WAV file can hold: its outermost size is a 32-bit number, and it counts 4088 bytes of header
/// and one byte of padding too.
inline constexpr std::int64_t largestWavAudio = 4'294'967'295 - 4088 - 1;

/// The first 4096 bytes of a take. Audio begins right behind them, and nothing follows it but a byte of padding. All
/// that changes while a take grows is the size, which can be written over at any time.
class TakeHeader {
public:
    static constexpr std::size_t size = 4096;

    /// Bytes of a header and where in the file they stand.
    struct Piece {
        std::int64_t offset = 0;
        std::span<const std::byte> bytes;
    };

    /// The header of a take that holds no frame; the shape is valid.
    explicit TakeHeader(const TakeShape& shape);

    /// The header that a file begins with. Nothing unless every byte of it, its sizes apart, is as we write it.
    [[nodiscard]] static std::optional<TakeHeader> parse(std::span<const std::byte> start);

    [[nodiscard]] const TakeShape& shape() const { return m_shape; }
    /// Whole frames that the header tells, 0 or more.
    [[nodiscard]] std::int64_t frames() const;
    /// The most frames that the container can tell.
    [[nodiscard]] std::int64_t maxFrames() const;
    /// A WAV file with this many frames needs a byte of padding behind them, since chunks begin at even places.
    [[nodiscard]] bool needsPadding(std::int64_t frames) const;

    /// Makes the header tell this many frames, 0 to maxFrames(), and whether the byte of padding stands in the file.
    void tell(std::int64_t frames, bool padded);

    [[nodiscard]] std::span<const std::byte> bytes() const { return m_bytes; }
    /// The part that tell() changes. It is written in one call, so that no other process sees half of it.
    [[nodiscard]] Piece sizePiece() const;

private:
    TakeShape m_shape;
    std::array<std::byte, size> m_bytes{};
};

}  // namespace vantiro
