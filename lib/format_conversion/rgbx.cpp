#include "lib/format_conversion/rgbx.h"

#include "lib/format_conversion/bgrx.h"

namespace Processing::FXlib::format_conversion {

namespace rgbx {
void rgbx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx

namespace rgbx_601 {
void rgbx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx_601

namespace rgbx_709 {
void rgbx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace rgbx_709

} // namespace Processing::FXlib::format_conversion
