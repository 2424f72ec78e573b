#include "lib/format_conversion/L.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/grey_to_bgra.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace L {
void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::spread_grey>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width}, plane{dst, dst_stride, width * 4ll});
}
} // namespace L

} // namespace Processing::FXlib::format_conversion
