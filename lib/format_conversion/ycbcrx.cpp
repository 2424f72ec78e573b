#include "lib/format_conversion/ycbcrx.h"

#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/detail/from_ycbcr444.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace ycbcrx {
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    ycbcr444_to_uyvy<line::reorder_444, ycbcr_order>(src, src_stride, dst, dst_stride, width, height);
}
} // namespace ycbcrx

} // namespace Processing::FXlib::format_conversion
