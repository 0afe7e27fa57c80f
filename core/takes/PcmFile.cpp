// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/PcmFile.h"

#include "core/capture/TakeChunks.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using Bytes = std::span<const std::byte>;

    /// The parts of a file through a window of 4 KiB, in which most headers stand as a whole.
    class Window {
    public:
        Window(int descriptor, std::int64_t fileBytes) : m_descriptor(descriptor), m_fileBytes(fileBytes) { }

        /// Bytes at an offset, at most 4 KiB; empty if the file does not hold all of them.
        Bytes at(std::int64_t offset, std::size_t count)
        {
            const auto length = static_cast<std::int64_t>(count);
            if (offset > m_fileBytes - length) {
                return {};
            }
            if (offset < m_start || offset + length > m_start + m_length) {
                const auto got = readAt(m_descriptor, offset, m_bytes);
                m_error = got ? 0 : got.error();
                m_start = offset;
                m_length = static_cast<std::int64_t>(got.value_or(0));
            }
            if (length > m_length) {
                return {};
            }
            return Bytes(m_bytes).subspan(static_cast<std::size_t>(offset - m_start), count);
        }

        /// From here to its end the file holds well-formed chunks only, and no audio.
        [[nodiscard]] bool hasChunks(TakeFormat container, std::int64_t offset) const
        {
            return areChunks(m_descriptor, container, offset, m_fileBytes);
        }
        [[nodiscard]] std::int64_t fileBytes() const { return m_fileBytes; }
        /// errno of the reading that failed last, else 0.
        [[nodiscard]] int error() const { return m_error; }

    private:
        int m_descriptor;
        std::int64_t m_fileBytes;
        std::int64_t m_start = 0;
        std::int64_t m_length = 0;
        int m_error = 0;
        std::array<std::byte, 4096> m_bytes;
    };

    template <class Number>
    Number littleAt(Bytes bytes, std::size_t at)
    {
        return qFromLittleEndian<Number>(bytes.subspan(at, sizeof(Number)).data());
    }

    template <class Number>
    Number bigAt(Bytes bytes, std::size_t at)
    {
        return qFromBigEndian<Number>(bytes.subspan(at, sizeof(Number)).data());
    }

    enum class Numbers {
        integers,
        floats,
    };

    constexpr std::uint32_t tag(const char (&letters)[5])
    {
        std::uint32_t value = 0;
        for (std::size_t index = 0; index < 4; ++index) {
            value = value << 8U | static_cast<unsigned char>(letters[index]);
        }
        return value;
    }

    struct Chunk {
        std::uint32_t name = 0;
        std::int64_t size = 0;  ///< As the file says.
        std::int64_t body = 0;  ///< Where its content begins.
    };

    /// More of them stand in front of no audio, and a file of zeros ends here.
    constexpr int maxChunks = 4096;

    std::optional<Chunk> chunkAt(Window& window, TakeFormat container, std::int64_t offset)
    {
        const std::size_t headBytes = container == TakeFormat::caf ? 12 : 8;
        const Bytes head = window.at(offset, headBytes);
        if (head.empty()) {
            return std::nullopt;
        }
        return Chunk{bigAt<std::uint32_t>(head, 0),
            container == TakeFormat::caf ? bigAt<std::int64_t>(head, 4)
                                         : std::int64_t{littleAt<std::uint32_t>(head, 4)},
            offset + static_cast<std::int64_t>(headBytes)};
    }

    /// Where the chunk behind this one would begin; nothing if this one does not end inside the file.
    std::optional<std::int64_t> endOf(const Chunk& chunk, TakeFormat container, std::int64_t fileBytes)
    {
        if (chunk.size < 0 || chunk.size > fileBytes - chunk.body) {
            return std::nullopt;
        }
        return chunk.body + chunk.size + (container == TakeFormat::wav ? chunk.size % 2 : 0);
    }

    std::optional<PcmLayout> layoutOf(double sampleRate, std::uint32_t channels, std::uint32_t bits,
        std::uint32_t frameBytes, Numbers numbers, std::endian order)
    {
        using Sample = PcmLayout::Sample;
        if (!PcmLayout::isPossible(sampleRate, channels)) {
            return std::nullopt;
        }
        constexpr std::array integers{Sample::int16, Sample::int24, Sample::int32};
        constexpr std::array floats{Sample::float32, Sample::float64};
        const std::span<const Sample> known =
            numbers == Numbers::integers ? std::span<const Sample>(integers) : std::span<const Sample>(floats);
        for (const Sample sample : known) {
            const std::int64_t bytes = PcmLayout::sampleBytes(sample);
            // Integers of fewer bits than their bytes have are stored at the top of them.
            const std::int64_t fewestBits = numbers == Numbers::integers ? 8 * bytes - 7 : 8 * bytes;
            if (bits >= fewestBits && bits <= 8 * bytes && frameBytes == bytes * channels) {
                return PcmLayout{
                    .sample = sample, .order = order, .sampleRate = sampleRate, .channels = static_cast<int>(channels)};
            }
        }
        return std::nullopt;
    }

    std::optional<PcmLayout> cafLayout(Bytes description)
    {
        constexpr std::uint32_t isFloat = 1;
        constexpr std::uint32_t isLittleEndian = 2;
        const auto flags = bigAt<std::uint32_t>(description, 12);
        const auto packetFrames = bigAt<std::uint32_t>(description, 20);
        if (bigAt<std::uint32_t>(description, 8) != tag("lpcm") || packetFrames != 1) {
            return std::nullopt;
        }
        return layoutOf(std::bit_cast<double>(bigAt<std::uint64_t>(description, 0)),
            bigAt<std::uint32_t>(description, 24), bigAt<std::uint32_t>(description, 28),
            bigAt<std::uint32_t>(description, 16), (flags & isFloat) != 0 ? Numbers::floats : Numbers::integers,
            (flags & isLittleEndian) != 0 ? std::endian::little : std::endian::big);
    }

    constexpr std::size_t wavFormatBytes = 16;
    constexpr std::size_t wavExtensibleBytes = 40;

    std::optional<PcmLayout> wavLayout(Bytes format)
    {
        constexpr std::uint16_t pcmTag = 1;
        constexpr std::uint16_t floatTag = 3;
        constexpr std::uint16_t extensibleTag = 0xFFFE;
        // What follows the tag in the subformats of all formats that have a tag.
        constexpr std::array<unsigned char, 14> subformatRest{
            0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
        auto formatTag = littleAt<std::uint16_t>(format, 0);
        if (formatTag == extensibleTag) {
            constexpr std::size_t subformat = 24;
            if (format.size() < wavExtensibleBytes
                || !std::ranges::equal(
                    format.subspan(subformat + 2, subformatRest.size()), std::as_bytes(std::span(subformatRest)))) {
                return std::nullopt;
            }
            formatTag = littleAt<std::uint16_t>(format, subformat);
        }
        if (formatTag != pcmTag && formatTag != floatTag) {
            return std::nullopt;
        }
        return layoutOf(littleAt<std::uint32_t>(format, 4), littleAt<std::uint16_t>(format, 2),
            littleAt<std::uint16_t>(format, 14), littleAt<std::uint16_t>(format, 12),
            formatTag == floatTag ? Numbers::floats : Numbers::integers, std::endian::little);
    }

    std::optional<TakeFormat> containerOf(Bytes start)
    {
        const auto name = bigAt<std::uint32_t>(start, 0);
        if (name == tag("caff")) {
            return TakeFormat::caf;
        }
        const bool isRiff = name == tag("RIFF") || name == tag("RF64") || name == tag("BW64");
        return isRiff && bigAt<std::uint32_t>(start, 8) == tag("WAVE") ? std::optional(TakeFormat::wav) : std::nullopt;
    }

    /// Collects what the chunks in front of the audio say.
    class HeaderParser {
    public:
        explicit HeaderParser(Window& window) : m_window(window) { }

        std::optional<PcmLayout> parse()
        {
            const Bytes start = m_window.at(0, 12);
            const std::optional<TakeFormat> container = start.empty() ? std::nullopt : containerOf(start);
            if (!container) {
                return std::nullopt;
            }
            m_container = *container;
            std::int64_t offset = m_container == TakeFormat::caf ? 8 : 12;
            for (int count = 0; count < maxChunks; ++count) {
                const std::optional<Chunk> chunk = chunkAt(m_window, m_container, offset);
                if (!chunk) {
                    return std::nullopt;
                }
                if (chunk->name == tag("data")) {
                    return m_layout ? std::optional(placed(*chunk)) : std::nullopt;
                }
                const std::optional<std::int64_t> end = endOf(*chunk, m_container, m_window.fileBytes());
                if (!end || !take(*chunk)) {
                    return std::nullopt;
                }
                offset = *end;
            }
            return std::nullopt;
        }

    private:
        static constexpr std::int64_t openWavSize = 0xFFFF'FFFF;

        /// False if the audio is of a kind that is not read here.
        bool take(const Chunk& chunk)
        {
            if (m_container == TakeFormat::caf && chunk.name == tag("desc")) {
                constexpr std::size_t descriptionBytes = 32;
                const Bytes description =
                    chunk.size >= std::int64_t{descriptionBytes} ? m_window.at(chunk.body, descriptionBytes) : Bytes();
                m_layout = description.empty() ? std::nullopt : cafLayout(description);
                return m_layout.has_value();
            }
            if (m_container == TakeFormat::wav && chunk.name == tag("fmt ")) {
                const std::size_t bytes =
                    chunk.size >= std::int64_t{wavExtensibleBytes} ? wavExtensibleBytes : wavFormatBytes;
                const Bytes format =
                    chunk.size >= std::int64_t{wavFormatBytes} ? m_window.at(chunk.body, bytes) : Bytes();
                m_layout = format.empty() ? std::nullopt : wavLayout(format);
                return m_layout.has_value();
            }
            if (m_container == TakeFormat::wav && chunk.name == tag("ds64") && chunk.size >= 16) {
                if (const Bytes sizes = m_window.at(chunk.body, 16); !sizes.empty()) {
                    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
                    m_longSize = static_cast<std::int64_t>(std::min(littleAt<std::uint64_t>(sizes, 8), largest));
                }
            }
            return true;
        }

        /// The layout with the place of its audio: what a finished header says, else all that the file holds.
        PcmLayout placed(const Chunk& data)
        {
            constexpr std::int64_t cafEditCountBytes = 4;
            PcmLayout layout = *m_layout;
            std::optional<std::int64_t> told;
            if (m_container == TakeFormat::caf) {
                layout.offset = data.body + cafEditCountBytes;
                if (data.size >= 0) {
                    told = std::max(data.size - cafEditCountBytes, std::int64_t{0});
                }
            } else {
                layout.offset = data.body;
                told = data.size == openWavSize ? m_longSize : data.size;
            }
            const std::int64_t held = std::max(m_window.fileBytes() - layout.offset, std::int64_t{0});
            // A recorder that was killed leaves the size of a while ago, or 0; a finished take may have tags behind it.
            const std::int64_t padding = m_container == TakeFormat::wav ? told.value_or(0) % 2 : 0;
            const bool isOpen =
                !told || (*told < held && !m_window.hasChunks(m_container, layout.offset + *told + padding));
            layout.frames = (isOpen ? held : std::min(*told, held)) / layout.frameBytes();
            return layout;
        }

        Window& m_window;
        TakeFormat m_container = TakeFormat::caf;
        std::optional<PcmLayout> m_layout;
        std::optional<std::int64_t> m_longSize;
    };

}  // namespace

bool PcmLayout::isPossible(double sampleRate, std::int64_t channels)
{
    return sampleRate >= minSampleRate && sampleRate <= maxSampleRate && channels >= 1 && channels <= maxChannels;
}

std::int64_t PcmLayout::sampleBytes(Sample sample)
{
    switch (sample) {
    case Sample::int16:
        return 2;
    case Sample::int24:
        return 3;
    case Sample::int32:
    case Sample::float32:
        return 4;
    case Sample::float64:
        break;
    }
    return 8;
}

Result<PcmFile> PcmFile::open(const QString& path)
{
    // Without waiting, should a pipe have such a name.
    PcmFile file{
        FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)), {}, {}};
    if (!file.descriptor.isOpen() || ::fstat(file.descriptor.get(), &file.status) != 0) {
        return std::unexpected(errnoError(path, errno));
    }
    if (S_ISREG(file.status.st_mode)) {
        Window window(file.descriptor.get(), file.status.st_size);
        file.layout = HeaderParser(window).parse();
        if (!file.layout && window.error() != 0) {
            return std::unexpected(errnoError(path, window.error()));
        }
    }
    return file;
}

}  // namespace vantiro
