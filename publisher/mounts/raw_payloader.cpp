#include "publisher/mounts/raw_payloader.h"

#include "publisher/gst_ptr.h"

#include <gst/rtp/gstrtpbasepayload.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace quillo::publisher {

namespace {

constexpr char const* element_name = "quillorawpay";
constexpr char const* copying_element = "rtpvrawpay";

GstRTPBasePayloadClass* copying = nullptr;

// The smallest piece of a line that a packet may hold.
struct pixel_group
{
    std::size_t bytes;
    std::size_t pixels;
};

struct line_layout
{
    pixel_group group;
    std::size_t line_bytes;
    std::size_t lines;
};

// Of pictures whose lines stand in one piece, nothing otherwise.
std::optional<line_layout> layout_of(GstPad* pad, GstBuffer* picture)
{
    auto const caps = adopt<caps_ptr>(gst_pad_get_current_caps(pad));
    GstVideoInfo info;
    if (!caps || !gst_video_info_from_caps(&info, caps.get()) || GST_VIDEO_INFO_IS_INTERLACED(&info))
        return std::nullopt;
    pixel_group group{};
    switch (GST_VIDEO_INFO_FORMAT(&info)) {
    case GST_VIDEO_FORMAT_UYVY:
        group = {4, 2};
        break;
    case GST_VIDEO_FORMAT_BGR:
        group = {3, 1};
        break;
    case GST_VIDEO_FORMAT_BGRA:
        group = {4, 1};
        break;
    default:
        return std::nullopt;
    }
    auto const width = static_cast<std::size_t>(GST_VIDEO_INFO_WIDTH(&info));
    line_layout const found{group, width / group.pixels * group.bytes,
                            static_cast<std::size_t>(GST_VIDEO_INFO_HEIGHT(&info))};
    if (width % group.pixels != 0 ||
        static_cast<std::size_t>(GST_VIDEO_INFO_PLANE_STRIDE(&info, 0)) != found.line_bytes ||
        gst_buffer_get_size(picture) != found.line_bytes * found.lines)
        return std::nullopt;
    return found;
}

// A part of one line in a packet.
struct segment
{
    std::size_t line;
    std::size_t first_pixel;
    std::size_t bytes;
};

constexpr std::size_t rtp_header = 12;
constexpr std::size_t sequence_high = 2; // the upper half of a long sequence number, 0 as GStreamer has it
constexpr std::size_t segment_header = 6;
constexpr guint8 rtp_version = 0x80;
constexpr guint8 marker = 0x80; // in the second byte
constexpr guint16 another_follows = 0x8000;

void write_headers(guint8* to, bool last_of_picture, std::vector<segment> const& segments)
{
    std::fill_n(to, rtp_header + sequence_high, guint8{0});
    to[0] = rtp_version;
    to[1] = last_of_picture ? marker : 0;
    to += rtp_header + sequence_high;
    for (auto const& one : segments) {
        auto const offset = static_cast<guint16>(one.first_pixel | (&one == &segments.back() ? 0 : another_follows));
        GST_WRITE_UINT16_BE(to, static_cast<guint16>(one.bytes));
        GST_WRITE_UINT16_BE(to + 2, static_cast<guint16>(one.line));
        GST_WRITE_UINT16_BE(to + 4, offset);
        to += segment_header;
    }
}

using memory_ptr = mini_object_ptr<GstMemory>;

// The picture as memory that packets share; the picture is let go when the last of them is gone. Were its own memory
// shared, it would come back to its pool before they are, and be given up there.
memory_ptr shareable(buffer_ptr picture)
{
    struct held
    {
        buffer_ptr picture;
        GstMapInfo map{};
        ~held()
        {
            if (map.memory)
                gst_buffer_unmap(picture.get(), &map);
        }
    };
    auto lent = std::make_unique<held>();
    lent->picture = std::move(picture);
    if (!gst_buffer_map(lent->picture.get(), &lent->map, GST_MAP_READ))
        return nullptr;
    auto const& map = lent->map;
    auto whole =
        adopt<memory_ptr>(gst_memory_new_wrapped(GST_MEMORY_FLAG_READONLY, map.data, map.size, 0, map.size, lent.get(),
                                                 [](gpointer gone) { delete static_cast<held*>(gone); }));
    lent.release();
    return whole;
}

// The packet that begins at a byte of the picture, which moves on behind it.
buffer_ptr next_packet(GstMemory* picture, line_layout const& layout, std::size_t& at, std::size_t mtu,
                       std::vector<segment>& segments)
{
    std::size_t const begin = at;
    std::size_t const end = layout.line_bytes * layout.lines;
    std::size_t room = mtu - rtp_header - sequence_high;
    segments.clear();
    while (at < end && room >= segment_header + layout.group.bytes) {
        std::size_t const in_line = at % layout.line_bytes;
        std::size_t const fits = (room - segment_header) / layout.group.bytes * layout.group.bytes;
        std::size_t const bytes = std::min(layout.line_bytes - in_line, fits);
        segments.push_back({at / layout.line_bytes, in_line / layout.group.bytes * layout.group.pixels, bytes});
        at += bytes;
        room -= segment_header + bytes;
    }
    std::size_t const head = rtp_header + sequence_high + segments.size() * segment_header;
    auto packet = adopt<buffer_ptr>(gst_buffer_new_allocate(nullptr, head, nullptr));
    GstMapInfo map;
    if (!packet || !gst_buffer_map(packet.get(), &map, GST_MAP_WRITE))
        return nullptr;
    write_headers(map.data, at == end, segments);
    gst_buffer_unmap(packet.get(), &map);
    gst_buffer_append_memory(packet.get(),
                             gst_memory_share(picture, static_cast<gssize>(begin), static_cast<gssize>(at - begin)));
    if (at == end)
        GST_BUFFER_FLAG_SET(packet.get(), GST_BUFFER_FLAG_MARKER);
    return packet;
}

GstFlowReturn handle_buffer(GstRTPBasePayload* self, GstBuffer* given)
{
    auto const layout = layout_of(GST_RTP_BASE_PAYLOAD_SINKPAD(self), given);
    std::size_t const mtu = GST_RTP_BASE_PAYLOAD_MTU(self);
    if (!layout || mtu < rtp_header + sequence_high + segment_header + layout->group.bytes)
        return copying->handle_buffer(self, given);
    auto const time = GST_BUFFER_PTS(given);
    auto const picture = shareable(adopt<buffer_ptr>(given));
    if (!picture)
        return GST_FLOW_ERROR;
    auto packets = adopt<mini_object_ptr<GstBufferList>>(gst_buffer_list_new());
    std::vector<segment> segments;
    for (std::size_t at = 0; at < layout->line_bytes * layout->lines;) {
        auto packet = next_packet(picture.get(), *layout, at, mtu, segments);
        if (!packet)
            return GST_FLOW_ERROR;
        GST_BUFFER_PTS(packet.get()) = time;
        gst_buffer_list_add(packets.get(), packet.release());
    }
    return gst_rtp_base_payload_push_list(self, packets.release());
}

void class_init(gpointer of, gpointer)
{
    copying = GST_RTP_BASE_PAYLOAD_CLASS(g_type_class_peek_parent(of));
    GST_RTP_BASE_PAYLOAD_CLASS(of)->handle_buffer = handle_buffer;
}

// A kind of GStreamer's own payloader, whatever that has inside.
bool make_known()
{
    auto const factory = adopt<object_ptr<GstElementFactory>>(gst_element_factory_find(copying_element));
    auto const loaded =
        factory ? adopt<object_ptr<GstPluginFeature>>(gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory.get())))
                : nullptr;
    if (!loaded)
        return false;
    GType const parent = gst_element_factory_get_element_type(GST_ELEMENT_FACTORY(loaded.get()));
    GTypeQuery sizes;
    g_type_query(parent, &sizes);
    GTypeInfo info{};
    info.class_size = static_cast<guint16>(sizes.class_size);
    info.class_init = class_init;
    info.instance_size = static_cast<guint16>(sizes.instance_size);
    GType const type = g_type_register_static(parent, "QuilloRawPay", &info, static_cast<GTypeFlags>(0));
    return gst_element_register(nullptr, element_name, GST_RANK_NONE, type);
}

} // namespace

char const* raw_payloader()
{
    static bool const known = make_known();
    return known ? element_name : copying_element;
}

} // namespace quillo::publisher
