#include "lib/format_conversion/bgr.h"

#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

namespace bgr {
void bgr(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    // Four bytes a pixel here too: size strides and buffers for it.
    y::y(src, src_stride, dst, dst_stride, width * 4, height);
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
