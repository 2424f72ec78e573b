#include "lib/format_conversion/bgr.h"

#include "lib/format_conversion/detail/from_rgb.h"
#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace bgr {
void bgr(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    // Four bytes a pixel here too: size strides and buffers for it.
    y::y(src, src_stride, dst, dst_stride, four_bytes_each(width), height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::bgr_to_uyvy>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 3ll}, plane{dst, dst_stride, width * 2ll, whole_pairs(width)});
}
} // namespace bgr

namespace bgr_601 {
void bgr_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgr::bgr(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgr_601

namespace bgr_709 {
void bgr_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgr::bgr(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgr_709

} // namespace Processing::FXlib::format_conversion
