#include "lib/format_conversion/yuy2.h"

#include "lib/format_conversion/uyvy.h"

namespace Processing::FXlib::format_conversion {

namespace yuy2 {
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    // Swapping the bytes of each pixel is its own inverse.
    uyvy::yuy2(src, src_stride, dst, dst_stride, width, height);
}
} // namespace yuy2

} // namespace Processing::FXlib::format_conversion
