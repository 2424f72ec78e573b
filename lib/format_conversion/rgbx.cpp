#include "lib/format_conversion/rgbx.h"

#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/detail/from_rgb.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace rgbx {
void rgbx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgbx_709::uyvy(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgbx_709::ycbcrx(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgbx_709::crcbyx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx

namespace rgbx_601 {
void rgbx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_to_uyvy, bt601, rgba_order>(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, rgba_order, ycbcr_order, filled>(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt601, rgba_order, crcby_order, filled>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx_601

namespace rgbx_709 {
void rgbx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_uyvy<line::rgb_to_uyvy, bt709, rgba_order>(src, src_stride, dst, dst_stride, width, height);
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, rgba_order, ycbcr_order, filled>(src, src_stride, dst, dst_stride, width, height);
}

void crcbyx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgb_to_ycbcr444<bt709, rgba_order, crcby_order, filled>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx_709

} // namespace Processing::FXlib::format_conversion
