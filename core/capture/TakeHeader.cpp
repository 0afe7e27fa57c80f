// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeHeader.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace vantiro {

namespace {

    constexpr std::size_t cafDescription = 8;
    constexpr std::size_t cafSampleRate = cafDescription + 12;
    constexpr std::size_t cafChannels = cafDescription + 36;
    constexpr std::size_t cafDataChunk = TakeHeader::size - 16;
    constexpr std::size_t cafDataSize = cafDataChunk + 4;
    constexpr std::int64_t cafEditCountBytes = 4;

    constexpr std::size_t wavRiffSize = 4;
    constexpr std::size_t wavDataChunk = TakeHeader::size - 8;
    constexpr std::size_t wavDataSize = wavDataChunk + 4;

    constexpr std::uint32_t littleEndianIntegers = 2;
    constexpr std::uint32_t discreteInOrder = 147U << 16U;
    constexpr std::uint16_t pcmTag = 1;
    constexpr std::uint16_t extensibleTag = 0xFFFE;
    constexpr std::uint16_t bitsPerSample = 24;
    // 00000001-0000-0010-8000-00AA00389B71, PCM, as it stands in a file.
    constexpr std::array<unsigned char, 16> pcmSubformat{
        1, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};

    /// Fills in a header from front to back.
    class Pen {
    public:
        Pen(std::span<std::byte> bytes, std::size_t at) : m_bytes(bytes), m_at(at) { }

        Pen& tag(const char (&letters)[5]) { return raw(letters, 4); }
        template <class Number>
        Pen& little(Number number)
        {
            const Number ordered = qToLittleEndian(number);
            return raw(&ordered, sizeof ordered);
        }
        template <class Number>
        Pen& big(Number number)
        {
            const Number ordered = qToBigEndian(number);
            return raw(&ordered, sizeof ordered);
        }
        Pen& raw(const void* data, std::size_t size)
        {
            std::memcpy(m_bytes.subspan(m_at, size).data(), data, size);
            m_at += size;
            return *this;
        }
        [[nodiscard]] std::size_t at() const { return m_at; }

    private:
        std::span<std::byte> m_bytes;
        std::size_t m_at;
    };

    template <class Number>
    Number littleAt(std::span<const std::byte> bytes, std::size_t at)
    {
        return qFromLittleEndian<Number>(bytes.subspan(at, sizeof(Number)).data());
    }

    template <class Number>
    Number bigAt(std::span<const std::byte> bytes, std::size_t at)
    {
        return qFromBigEndian<Number>(bytes.subspan(at, sizeof(Number)).data());
    }

    bool begins(std::span<const std::byte> bytes, const char (&letters)[5])
    {
        return std::memcmp(bytes.data(), letters, 4) == 0;
    }

    void drawCaf(std::span<std::byte> bytes, const TakeShape& shape)
    {
        const auto channels = static_cast<std::uint32_t>(shape.channels);
        Pen pen(bytes, 0);
        pen.tag("caff").big(std::uint16_t{1}).big(std::uint16_t{0});
        pen.tag("desc").big(std::int64_t{32}).big(std::bit_cast<std::uint64_t>(shape.sampleRate)).tag("lpcm");
        pen.big(littleEndianIntegers).big(static_cast<std::uint32_t>(shape.frameBytes())).big(std::uint32_t{1});
        pen.big(channels).big(std::uint32_t{bitsPerSample});
        if (shape.channels > 2) {
            // Inputs of a mixer are not the seats of a cinema, which readers assume unless they are told.
            pen.tag("chan").big(std::int64_t{12}).big(discreteInOrder | channels);
            pen.big(std::uint32_t{0}).big(std::uint32_t{0});
        }
        pen.tag("free").big(static_cast<std::int64_t>(cafDataChunk - pen.at() - 8));
        Pen(bytes, cafDataChunk).tag("data").big(cafEditCountBytes).big(std::uint32_t{0});
    }

    void drawWav(std::span<std::byte> bytes, const TakeShape& shape)
    {
        const bool extensible = shape.channels > 2;
        const std::uint32_t formatBytes = extensible ? 40 : 16;
        const auto channels = static_cast<std::uint16_t>(shape.channels);
        const auto frameBytes = static_cast<std::uint16_t>(shape.frameBytes());
        const auto rate = static_cast<std::uint32_t>(std::llround(shape.sampleRate));
        const std::size_t formatChunk = wavDataChunk - 8 - formatBytes;
        Pen pen(bytes, 0);
        pen.tag("RIFF").little(std::uint32_t{0}).tag("WAVE");
        pen.tag("JUNK").little(static_cast<std::uint32_t>(formatChunk - pen.at() - 4));
        pen = Pen(bytes, formatChunk);
        pen.tag("fmt ").little(formatBytes).little(extensible ? extensibleTag : pcmTag).little(channels).little(rate);
        pen.little(rate * frameBytes).little(frameBytes).little(bitsPerSample);
        if (extensible) {
            pen.little(std::uint16_t{22}).little(bitsPerSample).little(std::uint32_t{0});
            pen.raw(pcmSubformat.data(), pcmSubformat.size());
        }
        pen.tag("data").little(std::uint32_t{0});
    }

    /// The shape that a file of ours would have with this start; whether it is one is not looked at.
    std::optional<TakeShape> claimedShape(std::span<const std::byte> start)
    {
        if (begins(start, "caff")) {
            return TakeShape{TakeFormat::caf, std::bit_cast<double>(bigAt<std::uint64_t>(start, cafSampleRate)),
                bigAt<std::int32_t>(start, cafChannels)};
        }
        if (begins(start, "RIFF")) {
            for (const std::size_t formatBytes : {16U, 40U}) {
                const std::size_t format = wavDataChunk - formatBytes;
                if (begins(start.subspan(format - 8), "fmt ")) {
                    return TakeShape{TakeFormat::wav, static_cast<double>(littleAt<std::uint32_t>(start, format + 4)),
                        littleAt<std::uint16_t>(start, format + 2)};
                }
            }
        }
        return std::nullopt;
    }

}  // namespace

bool TakeShape::isValid() const
{
    return channels >= 1 && channels <= maxChannels && std::isfinite(sampleRate) && sampleRate > 0
        && (format != TakeFormat::wav || (sampleRate >= 0.5 && sampleRate < 4294967295.0));
}

TakeHeader::TakeHeader(const TakeShape& shape) : m_shape(shape)
{
    if (shape.format == TakeFormat::caf) {
        drawCaf(m_bytes, shape);
    } else {
        drawWav(m_bytes, shape);
    }
    tell(0, false);
}

std::optional<TakeHeader> TakeHeader::parse(std::span<const std::byte> start)
{
    if (start.size() < size) {
        return std::nullopt;
    }
    const std::optional<TakeShape> shape = claimedShape(start);
    if (!shape || !shape->isValid()) {
        return std::nullopt;
    }
    // Drawn anew with the sizes put in, the header must come out the same to the last byte.
    TakeHeader header(*shape);
    const auto copy = [&](std::size_t at, std::size_t count) {
        std::memcpy(header.m_bytes.data() + at, start.data() + at, count);
    };
    if (shape->format == TakeFormat::caf) {
        copy(cafDataSize, sizeof(std::int64_t));
    } else {
        copy(wavRiffSize, sizeof(std::uint32_t));
        copy(wavDataSize, sizeof(std::uint32_t));
    }
    if (std::memcmp(header.m_bytes.data(), start.data(), size) != 0) {
        return std::nullopt;
    }
    return header;
}

std::int64_t TakeHeader::frames() const
{
    const std::int64_t audio = m_shape.format == TakeFormat::caf
        ? std::max(bigAt<std::int64_t>(m_bytes, cafDataSize), cafEditCountBytes) - cafEditCountBytes
        : std::int64_t{littleAt<std::uint32_t>(m_bytes, wavDataSize)};
    return audio / m_shape.frameBytes();
}

std::int64_t TakeHeader::maxFrames() const
{
    constexpr auto largestCafAudio = std::numeric_limits<std::int64_t>::max() - std::int64_t{size};
    return (m_shape.format == TakeFormat::caf ? largestCafAudio : largestWavAudio) / m_shape.frameBytes();
}

bool TakeHeader::needsPadding(std::int64_t frames) const
{
    return m_shape.format == TakeFormat::wav && frames * m_shape.frameBytes() % 2 != 0;
}

void TakeHeader::tell(std::int64_t frames, bool padded)
{
    const std::int64_t audio = frames * m_shape.frameBytes();
    if (m_shape.format == TakeFormat::caf) {
        Pen(m_bytes, cafDataSize).big(audio + cafEditCountBytes);
    } else {
        const std::int64_t riff = std::int64_t{size} - 8 + audio + (padded ? 1 : 0);
        Pen(m_bytes, wavRiffSize).little(static_cast<std::uint32_t>(riff));
        Pen(m_bytes, wavDataSize).little(static_cast<std::uint32_t>(audio));
    }
}

TakeHeader::Piece TakeHeader::sizePiece() const
{
    const std::size_t first = m_shape.format == TakeFormat::caf ? cafDataSize : wavRiffSize;
    const std::size_t count = m_shape.format == TakeFormat::caf ? sizeof(std::int64_t) : size - wavRiffSize;
    return {static_cast<std::int64_t>(first), std::span(m_bytes).subspan(first, count)};
}

}  // namespace vantiro
