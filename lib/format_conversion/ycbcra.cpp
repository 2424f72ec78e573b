#include "lib/format_conversion/ycbcra.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/bgra.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace ycbcra {
void ycbcra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
            bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}

void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    auto const kernel =
        by_alignment<line::composite_444, line::ycbcr_order>(is_aligned(src, src_stride), is_aligned(dst, dst_stride));
    walk(width, height, kernel, plane{src, src_stride, width * 4ll},
         plane{dst, dst_stride, width * 2ll, whole_pairs(width)});
}

void uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
            int alpha_stride, int width, int height, bool* all_opaque)
{
    bool const src_aligned = is_aligned(src, src_stride);
    bool const dst_aligned = is_aligned(dst, dst_stride, alpha, alpha_stride);
    auto const kernel = all_opaque != nullptr
                            ? by_alignment<line::split_alpha_444, line::ycbcr_order, true>(src_aligned, dst_aligned)
                            : by_alignment<line::split_alpha_444, line::ycbcr_order, false>(src_aligned, dst_aligned);
    bool const opaque = walk(width, height, kernel, plane{src, src_stride, width * 4ll},
                             plane{dst, dst_stride, width * 2ll, whole_pairs(width)},
                             plane{alpha, alpha_stride, width, whole_pairs(width) / 2});
    if (all_opaque != nullptr)
        *all_opaque = opaque;
}
} // namespace ycbcra

} // namespace Processing::FXlib::format_conversion
