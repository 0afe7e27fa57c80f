// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/PcmFile.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

/// CAF and WAV files put together byte by byte, right or wrong.
namespace vantiro::test {

template <class Number>
QByteArray ordered(std::endian order, Number number)
{
    const Number bytes = order == std::endian::little ? qToLittleEndian(number) : qToBigEndian(number);
    return {reinterpret_cast<const char*>(&bytes), sizeof bytes};
}

template <class Number>
QByteArray little(Number number)
{
    return ordered(std::endian::little, number);
}

template <class Number>
QByteArray big(Number number)
{
    return ordered(std::endian::big, number);
}

inline bool isFloat(PcmLayout::Sample sample)
{
    return sample == PcmLayout::Sample::float32 || sample == PcmLayout::Sample::float64;
}

inline QByteArray cafChunk(const char* name, const QByteArray& body)
{
    return QByteArray(name, 4) + big(std::int64_t{body.size()}) + body;
}

inline QByteArray wavChunk(const char* name, const QByteArray& body)
{
    return QByteArray(name, 4) + little(static_cast<std::uint32_t>(body.size())) + body
        + QByteArray(body.size() % 2, '\0');
}

/// Everything in front of other chunks.
inline QByteArray cafStart(const PcmLayout& layout)
{
    const std::uint32_t flags = (isFloat(layout.sample) ? 1U : 0U) | (layout.order == std::endian::little ? 2U : 0U);
    return QByteArray("caff\0\1\0\0", 8)
        + cafChunk("desc",
            big(std::bit_cast<std::uint64_t>(layout.sampleRate)) + "lpcm" + big(flags)
                + big(static_cast<std::uint32_t>(layout.frameBytes())) + big(std::uint32_t{1})
                + big(static_cast<std::uint32_t>(layout.channels))
                + big(static_cast<std::uint32_t>(8 * PcmLayout::sampleBytes(layout.sample))));
}

enum class WavKind {
    plain,
    extensible,
};

inline QByteArray wavFormat(const PcmLayout& layout, WavKind kind)
{
    const std::uint16_t formatTag = isFloat(layout.sample) ? 3 : 1;
    const auto bits = static_cast<std::uint16_t>(8 * PcmLayout::sampleBytes(layout.sample));
    const auto frameBytes = static_cast<std::uint16_t>(layout.frameBytes());
    const auto rate = static_cast<std::uint32_t>(layout.sampleRate);
    QByteArray body = little(kind == WavKind::plain ? formatTag : std::uint16_t{0xFFFE})
        + little(static_cast<std::uint16_t>(layout.channels)) + little(rate) + little(rate * frameBytes)
        + little(frameBytes) + little(bits);
    if (kind == WavKind::extensible) {
        body += little(std::uint16_t{22}) + little(bits) + little(std::uint32_t{0}) + little(formatTag)
            + QByteArray::fromHex("000000001000800000AA00389B71");
    }
    return wavChunk("fmt ", body);
}

/// A whole file of layout.frames frames with this audio in it.
inline QByteArray cafFile(const PcmLayout& layout, const QByteArray& audio)
{
    return cafStart(layout) + cafChunk("data", QByteArray(4, '\0') + audio);
}

inline QByteArray wavFile(const PcmLayout& layout, const QByteArray& audio, WavKind kind = WavKind::plain)
{
    const QByteArray chunks = wavFormat(layout, kind) + wavChunk("data", audio);
    return "RIFF" + little(static_cast<std::uint32_t>(chunks.size() + 4)) + "WAVE" + chunks;
}

/// Samples, and the bytes that they are stored as.
struct PcmSamples {
    std::vector<float> values;  ///< Interleaved, as they have to be read.
    QByteArray bytes;

    static PcmSamples random(const PcmLayout& layout, std::int64_t frames)
    {
        using Sample = PcmLayout::Sample;
        std::mt19937 generator(7);
        PcmSamples samples;
        for (std::int64_t index = 0; index < frames * layout.channels; ++index) {
            const auto number = static_cast<std::int32_t>(generator());
            double value = 0;
            if (layout.sample == Sample::int16) {
                value = (number >> 16) / 32768.0;
                samples.bytes += ordered(layout.order, static_cast<std::int16_t>(number >> 16));
            } else if (layout.sample == Sample::int24) {
                value = (number >> 8) / 8388608.0;
                const QByteArray four = ordered(layout.order, number >> 8);
                samples.bytes += layout.order == std::endian::little ? four.first(3) : four.last(3);
            } else if (layout.sample == Sample::int32) {
                value = number / 2147483648.0;
                samples.bytes += ordered(layout.order, number);
            } else if (layout.sample == Sample::float32) {
                value = static_cast<float>(number / 1e9);
                samples.bytes += ordered(layout.order, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
            } else {
                value = number / 1e9;
                samples.bytes += ordered(layout.order, std::bit_cast<std::uint64_t>(value));
            }
            samples.values.push_back(static_cast<float>(value));
        }
        return samples;
    }
};

}  // namespace vantiro::test
