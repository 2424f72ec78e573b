#include "lib/format_conversion/rgba.h"

#include "lib/format_conversion/bgra.h"
#include "lib/format_conversion/detail/from_rgb.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace rgba {
void rgba(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_over_black_to_uyvy, rgba_order>(src, src_stride, dst, dst_stride, width, height);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    rgba_709::uyvy_a(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgba_709::ycbcra(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgba_709::crcbya(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgba

namespace rgba_601 {
void rgba_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    rgb_to_uyvy_a<bt601, rgba_order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, rgba_order, ycbcr_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, rgba_order, crcby_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgba_601

namespace rgba_709 {
void rgba_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    rgb_to_uyvy_a<bt709, rgba_order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, rgba_order, ycbcr_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, rgba_order, crcby_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgba_709

} // namespace Processing::FXlib::format_conversion
