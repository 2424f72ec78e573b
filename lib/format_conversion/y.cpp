#include "lib/format_conversion/y.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/copy.h"
#include "lib/format_conversion/line/y_to_uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace y {
void y(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::copy_bytes>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width}, plane{dst, dst_stride, width});
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool compress)
{
    auto const src_aligned = is_aligned(src, src_stride), dst_aligned = is_aligned(dst, dst_stride);
    walk(width, height,
         compress ? by_alignment<line::add_grey_chroma, true>(src_aligned, dst_aligned)
                  : by_alignment<line::add_grey_chroma, false>(src_aligned, dst_aligned),
         plane{src, src_stride, width}, plane{dst, dst_stride, width * 2ll});
}
} // namespace y

} // namespace Processing::FXlib::format_conversion
