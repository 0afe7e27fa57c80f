// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/SourcePort.h"

#include <pipewire/keys.h>
#include <spa/node/utils.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/buffers.h>
#include <spa/utils/dict.h>

#include <algorithm>
#include <cerrno>

namespace vantiro {

namespace {

    constexpr int maxBuffers = 16;
    constexpr int cycleBytes = maxCycleFrames * static_cast<int>(sizeof(float));

}  // namespace

QByteArray channelName(std::uint32_t index, int channels)
{
    if (channels == 1) {
        return "MONO";
    }
    if (channels == 2) {
        return index == 0 ? "FL" : "FR";
    }
    return "AUX" + QByteArray::number(index);
}

SourcePort::SourcePort(std::uint32_t index, int channels, Kind kind)
    : m_index(index)
    , m_name((kind == Kind::jack ? "capture_" : "output_") + channelName(index, channels))
    , m_channel(channelName(index, channels))
    , m_kind(kind)
{
    m_params[0] = SPA_PARAM_INFO(SPA_PARAM_EnumFormat, SPA_PARAM_INFO_READ);
    m_params[1] = SPA_PARAM_INFO(SPA_PARAM_Format, SPA_PARAM_INFO_WRITE);
    m_params[2] = SPA_PARAM_INFO(SPA_PARAM_Buffers, 0);
    m_params[3] = SPA_PARAM_INFO(SPA_PARAM_IO, SPA_PARAM_INFO_READ);
}

void SourcePort::emitInfo(spa_hook_list& listeners, bool full)
{
    std::array<spa_dict_item, 5> items{};
    items[0] = SPA_DICT_ITEM_INIT(PW_KEY_PORT_NAME, m_name.constData());
    items[1] = SPA_DICT_ITEM_INIT(PW_KEY_AUDIO_CHANNEL, m_channel.constData());
    items[2] = SPA_DICT_ITEM_INIT(PW_KEY_FORMAT_DSP, "32 bit float mono audio");
    items[3] = SPA_DICT_ITEM_INIT(PW_KEY_PORT_PHYSICAL, "true");
    items[4] = SPA_DICT_ITEM_INIT(PW_KEY_PORT_TERMINAL, "true");
    const spa_dict properties = SPA_DICT_INIT(items.data(), m_kind == Kind::jack ? 5U : 3U);

    spa_port_info info = SPA_PORT_INFO_INIT();
    info.change_mask = SPA_PORT_CHANGE_MASK_PARAMS;
    if (full) {
        info.change_mask |= SPA_PORT_CHANGE_MASK_FLAGS | SPA_PORT_CHANGE_MASK_PROPS;
    }
    info.flags = m_kind == Kind::jack ? SPA_PORT_FLAG_LIVE | SPA_PORT_FLAG_PHYSICAL | SPA_PORT_FLAG_TERMINAL : 0;
    info.props = &properties;
    info.params = m_params.data();
    info.n_params = static_cast<std::uint32_t>(m_params.size());
    spa_node_emit_port_info(&listeners, SPA_DIRECTION_OUTPUT, m_index, &info);
}

spa_pod* SourcePort::param(std::uint32_t id, std::uint32_t index, spa_pod_builder& builder) const
{
    void* result = nullptr;
    if (id == SPA_PARAM_EnumFormat || (id == SPA_PARAM_Format && m_hasFormat)) {
        spa_audio_info_dsp format{};
        format.format = SPA_AUDIO_FORMAT_DSP_F32;
        result = index == 0 ? spa_format_audio_dsp_build(&builder, id, &format) : nullptr;
    } else if (id == SPA_PARAM_Buffers && m_hasFormat && index == 0) {
        // Memory that PipeWire maps itself: the data pointer is there when the buffer comes.
        result = spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamBuffers, id, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(1, 1, maxBuffers), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1),
            SPA_PARAM_BUFFERS_size, SPA_POD_Int(cycleBytes), SPA_PARAM_BUFFERS_stride,
            SPA_POD_Int(static_cast<int>(sizeof(float))), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemPtr));
    } else if (id == SPA_PARAM_IO && index == 0) {
        result = spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamIO, id, SPA_PARAM_IO_id,
            SPA_POD_Id(SPA_IO_Buffers), SPA_PARAM_IO_size, SPA_POD_Int(static_cast<int>(sizeof(spa_io_buffers))));
    }
    return static_cast<spa_pod*>(result);
}

int SourcePort::setFormat(const spa_pod* format)
{
    if (format != nullptr) {
        spa_audio_info info{};
        if (spa_format_parse(format, &info.media_type, &info.media_subtype) < 0
            || info.media_type != SPA_MEDIA_TYPE_audio || info.media_subtype != SPA_MEDIA_SUBTYPE_dsp) {
            return -EINVAL;
        }
    }
    m_hasFormat = format != nullptr;
    // The toggled serial makes the graph read the values again.
    m_params[1].flags = (m_params[1].flags ^ SPA_PARAM_INFO_SERIAL) & (SPA_PARAM_INFO_SERIAL | SPA_PARAM_INFO_WRITE);
    m_params[1].flags |= m_hasFormat ? SPA_PARAM_INFO_READ : 0;
    m_params[2].flags =
        ((m_params[2].flags ^ SPA_PARAM_INFO_SERIAL) & SPA_PARAM_INFO_SERIAL) | (m_hasFormat ? SPA_PARAM_INFO_READ : 0);
    return 0;
}

int SourcePort::useBuffers(spa_buffer** buffers, std::uint32_t count)
{
    m_buffers.clear();
    for (std::uint32_t index = 0; index < count; ++index) {
        const spa_data& data = buffers[index]->datas[0];
        if (data.data == nullptr || data.maxsize < static_cast<std::uint32_t>(cycleBytes)) {
            m_buffers.clear();
            return -EINVAL;
        }
        m_buffers.push_back(buffers[index]);
    }
    return 0;
}

float* SourcePort::target() const
{
    return m_area == nullptr || m_buffers.empty() ? nullptr : static_cast<float*>(m_buffers[0]->datas[0].data);
}

void SourcePort::publish(int frames) const
{
    spa_chunk& chunk = *m_buffers[0]->datas[0].chunk;
    chunk.offset = 0;
    chunk.size = static_cast<std::uint32_t>(frames) * static_cast<std::uint32_t>(sizeof(float));
    chunk.stride = sizeof(float);
    chunk.flags = 0;
    m_area->buffer_id = 0;
    m_area->status = SPA_STATUS_HAVE_DATA;
}

}  // namespace vantiro
