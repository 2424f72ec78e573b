#include "lib/format_conversion/vuya.h"

#include "lib/format_conversion/bgra.h"
#include "lib/format_conversion/detail/from_ycbcr444.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace vuya {
void vuya(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    ycbcr444_to_uyvy<line::composite_444, vuy_order>(src, src_stride, dst, dst_stride, width, height);
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    ycbcr444_to_uyvy_a<vuy_order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height, all_opaque);
}
} // namespace vuya

} // namespace Processing::FXlib::format_conversion
