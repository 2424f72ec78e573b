#include "lib/format_conversion/v210.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/v210_to_uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace v210 {
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    // Only multiples of three pixels take a whole number of bytes; other lines never follow without a gap.
    long long const tight = width % 3 == 0 ? width / 3 * 8ll : 1ll << 31;
    walk(width, height, by_alignment<line::narrow_v210>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, tight}, plane{dst, dst_stride, width * 2ll});
}
} // namespace v210

} // namespace Processing::FXlib::format_conversion
