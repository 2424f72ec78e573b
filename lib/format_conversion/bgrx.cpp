#include "lib/format_conversion/bgrx.h"

#include "lib/format_conversion/detail/from_rgb.h"
#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace bgrx {
void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    y::y(src, src_stride, dst, dst_stride, four_bytes_each(width), height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx_709::uyvy(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx_709::ycbcrx(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx_709::crcbyx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgrx

namespace bgrx_601 {
void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_to_uyvy, bt601, bgra_order>(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, bgra_order, ycbcr_order, filled>(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, bgra_order, crcby_order, filled>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgrx_601

namespace bgrx_709 {
void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_to_uyvy, bt709, bgra_order>(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, bgra_order, ycbcr_order, filled>(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, bgra_order, crcby_order, filled>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgrx_709

} // namespace Processing::FXlib::format_conversion
