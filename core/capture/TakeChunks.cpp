// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeChunks.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>

#include <unistd.h>

namespace vantiro {

std::expected<std::size_t, int> readAt(int descriptor, std::int64_t offset, std::span<std::byte> bytes)
{
    std::size_t total = 0;
    while (total < bytes.size()) {
        const ssize_t count =
            ::pread(descriptor, bytes.data() + total, bytes.size() - total, offset + static_cast<std::int64_t>(total));
        if (count < 0 && errno != EINTR) {
            return std::unexpected(errno);
        }
        if (count == 0) {
            break;
        }
        total += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return total;
}

bool areChunks(int descriptor, TakeFormat format, std::int64_t offset, std::int64_t end)
{
    // Nobody writes more of them behind audio, and a damaged file asks for no endless reading.
    constexpr int most = 4096;
    const bool isCaf = format == TakeFormat::caf;
    const std::size_t headBytes = isCaf ? 12 : 8;
    for (int count = 0; count < most && offset < end; ++count) {
        std::array<std::byte, 12> head{};
        if (readAt(descriptor, offset, std::span(head).first(headBytes)) != headBytes) {
            return false;
        }
        const bool isNamed = std::all_of(head.begin(), head.begin() + 4,
            [](std::byte letter) { return letter >= std::byte{0x20} && letter < std::byte{0x7F}; });
        const std::int64_t size = isCaf ? qFromBigEndian<std::int64_t>(head.data() + 4)
                                        : std::int64_t{qFromLittleEndian<std::uint32_t>(head.data() + 4)};
        offset += static_cast<std::int64_t>(headBytes);
        if (!isNamed || size < 0 || size > end - offset) {
            return false;
        }
        offset += isCaf ? size : size + size % 2;
    }
    return offset >= end;
}

}  // namespace vantiro
