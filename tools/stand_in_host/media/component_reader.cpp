#include "tools/stand_in_host/media/component_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quillo::stand_in {

char const* const readable_formats =
    "{ I420, YV12, NV12, NV21, Y42B, NV16, UYVY, YUY2, YVYU, VYUY, Y444, NV24, Y41B, AYUV, VUYA, A420, GRAY8, "
    "I420_10LE, I422_10LE, Y444_10LE, P010_10LE, I420_12LE, I422_12LE, Y444_12LE, A420_10LE, A422_10LE, A444_10LE, "
    "GBR, GBRA, RGB, BGR, RGBA, BGRA, ARGB, ABGR, RGBx, BGRx, xRGB, xBGR, GBR_10LE, GBR_12LE }";

component_reader::component_reader(GstVideoFrame const& frame, int component, bool interlaced_picture)
    : data(static_cast<unsigned char const*>(GST_VIDEO_FRAME_COMP_DATA(&frame, component))),
      stride(GST_VIDEO_FRAME_COMP_STRIDE(&frame, component)),
      pixel_stride(GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, component)), width(GST_VIDEO_FRAME_WIDTH(&frame)),
      rows(GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component)),
      sub_x(GST_VIDEO_FORMAT_INFO_W_SUB(frame.info.finfo, component)),
      sub_y(GST_VIDEO_FORMAT_INFO_H_SUB(frame.info.finfo, component)),
      depth(GST_VIDEO_FRAME_COMP_DEPTH(&frame, component)),
      shift(static_cast<int>(GST_VIDEO_FORMAT_INFO_SHIFT(frame.info.finfo, component))), interlaced(interlaced_picture)
{
    if (pixel_stride != 1 || sub_x != 0 || depth > 8)
        expanded.resize(static_cast<std::size_t>(width));
}

unsigned char const* component_reader::line(int y)
{
    int row = y >> sub_y;
    if (sub_y != 0 && interlaced) {
        row = ((y >> 1 >> sub_y) << 1) + (y & 1);
        if (row >= rows)
            row -= 2;
        row = std::max(row, 0);
    }
    unsigned char const* const from = data + static_cast<std::ptrdiff_t>(row) * stride;
    if (expanded.empty())
        return from;
    if (row != expanded_row) {
        expand(from);
        expanded_row = row;
    }
    return expanded.data();
}

namespace {

template <int pixel_stride, int sub_x>
void expand_bytes(unsigned char const* from, unsigned char* to, int width)
{
    for (int x = 0; x < width; ++x)
        to[x] = from[(x >> sub_x) * pixel_stride];
}

} // namespace

void component_reader::expand(unsigned char const* from)
{
    unsigned char* const to = expanded.data();
    if (depth > 8) {
        unsigned const mask = (1u << depth) - 1;
        unsigned const half = 1u << (depth - 9);
        for (int x = 0; x < width; ++x) {
            std::uint16_t word;
            std::memcpy(&word, from + (x >> sub_x) * pixel_stride, sizeof word);
            to[x] =
                static_cast<unsigned char>(std::min(((unsigned{word} >> shift & mask) + half) >> (depth - 8), 255u));
        }
        return;
    }
    // The usual layouts with constant steps, which compilers turn into vector code.
    if (pixel_stride == 1 && sub_x == 1)
        expand_bytes<1, 1>(from, to, width);
    else if (pixel_stride == 2 && sub_x == 1)
        expand_bytes<2, 1>(from, to, width);
    else if (pixel_stride == 2 && sub_x == 0)
        expand_bytes<2, 0>(from, to, width);
    else if (pixel_stride == 4 && sub_x == 0)
        expand_bytes<4, 0>(from, to, width);
    else
        for (int x = 0; x < width; ++x)
            to[x] = from[(x >> sub_x) * pixel_stride];
}

} // namespace quillo::stand_in
