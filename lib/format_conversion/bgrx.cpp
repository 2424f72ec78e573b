#include "lib/format_conversion/bgrx.h"

#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

namespace bgrx {
void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    y::y(src, src_stride, dst, dst_stride, width * 4, height);
}
} // namespace bgrx

namespace bgrx_601 {
void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgrx_601

namespace bgrx_709 {
void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}
} // namespace bgrx_709

} // namespace Processing::FXlib::format_conversion
