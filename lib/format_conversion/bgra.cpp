#include "lib/format_conversion/bgra.h"

#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/detail/from_rgb.h"
#include "lib/format_conversion/line/copy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace bgra {
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque)
{
    if (all_opaque == nullptr)
        return bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
    auto const copy = by_alignment<line::copy_testing_alpha>(is_aligned(src, src_stride), is_aligned(dst, dst_stride));
    *all_opaque = walk(width, height, copy, plane{src, src_stride, width * 4ll}, plane{dst, dst_stride, width * 4ll});
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_over_black_to_uyvy, bgra_order>(src, src_stride, dst, dst_stride, width, height);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    bgra_709::uyvy_a(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgra_709::ycbcra(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgra_709::crcbya(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgra

namespace bgra_601 {
void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    rgb_to_uyvy_a<bt601, bgra_order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, bgra_order, ycbcr_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, bgra_order, crcby_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgra_601

namespace bgra_709 {
void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    rgb_to_uyvy_a<bt709, bgra_order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, bgra_order, ycbcr_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, bgra_order, crcby_order, with_alpha>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgra_709

} // namespace Processing::FXlib::format_conversion
