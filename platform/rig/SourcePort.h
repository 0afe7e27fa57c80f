// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <spa/buffer/buffer.h>
#include <spa/node/io.h>
#include <spa/node/node.h>
#include <spa/param/param.h>
#include <spa/pod/builder.h>

#include <array>
#include <cstdint>
#include <vector>

namespace vantiro {

/// The most frames of one cycle that a port has room for; no graph asks for more.
inline constexpr int maxCycleFrames = 8192;

/// One output port of a virtual device: mono float, as the graph mixes it.
class SourcePort {
public:
    /// What the port tells of itself; true for a hardware-like jack.
    enum class Kind {
        jack,
        stream
    };

    SourcePort(std::uint32_t index, int channels, Kind kind);

    SourcePort(const SourcePort&) = delete;
    SourcePort& operator=(const SourcePort&) = delete;

    [[nodiscard]] std::uint32_t index() const { return m_index; }

    /// Calls the listeners with the port's description.
    void emitInfo(spa_hook_list& listeners, bool full);
    /// The `index`th value of a parameter, in the builder's memory; null if there is none.
    [[nodiscard]] spa_pod* param(std::uint32_t id, std::uint32_t index, spa_pod_builder& builder) const;
    /// Takes or clears (null) the format; a negative errno if it is another than the port's own.
    [[nodiscard]] int setFormat(const spa_pod* format);
    /// Data that the graph shares with us, or nothing. Not while the data thread uses the port.
    [[nodiscard]] int useBuffers(spa_buffer** buffers, std::uint32_t count);
    /// Not while the data thread uses the port.
    void useArea(spa_io_buffers* area) { m_area = area; }

    /// Where the next cycle's samples go, room for maxCycleFrames; null while nobody listens. Data thread only.
    [[nodiscard]] float* target() const;
    /// Hands out the samples that were written to target(). Data thread only.
    void publish(int frames) const;

private:
    std::uint32_t m_index;
    QByteArray m_name;
    QByteArray m_channel;
    Kind m_kind;
    bool m_hasFormat = false;
    std::array<spa_param_info, 4> m_params{};
    std::vector<spa_buffer*> m_buffers;
    spa_io_buffers* m_area = nullptr;
};

/// The position name of one of `channels` channels: MONO; FL and FR; AUX0, AUX1, ...
[[nodiscard]] QByteArray channelName(std::uint32_t index, int channels);

}  // namespace vantiro
