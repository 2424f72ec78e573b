#include "lib/format_conversion/ycbcrx.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace ycbcrx {
void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    auto const kernel =
        by_alignment<line::reorder_444, line::ycbcr_order>(is_aligned(src, src_stride), is_aligned(dst, dst_stride));
    walk(width, height, kernel, plane{src, src_stride, width * 4ll},
         plane{dst, dst_stride, width * 2ll, whole_pairs(width)});
}
} // namespace ycbcrx

} // namespace Processing::FXlib::format_conversion
