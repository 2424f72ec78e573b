#include "lib/format_conversion/bgra.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/bgrx.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/copy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace bgra {
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          bool* all_opaque)
{
    if (all_opaque == nullptr)
        return bgrx::bgrx(src, src_stride, dst, dst_stride, width, height);
    auto const copy = by_alignment<line::copy_testing_alpha>(is_aligned(src, src_stride), is_aligned(dst, dst_stride));
    *all_opaque = walk(width, height, copy, plane{src, src_stride, width * 4ll}, plane{dst, dst_stride, width * 4ll});
}
} // namespace bgra

namespace bgra_601 {
void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}
} // namespace bgra_601

namespace bgra_709 {
void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
              bool* all_opaque)
{
    bgra::bgra(src, src_stride, dst, dst_stride, width, height, all_opaque);
}
} // namespace bgra_709

} // namespace Processing::FXlib::format_conversion
