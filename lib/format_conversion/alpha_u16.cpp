#include "lib/format_conversion/alpha_u16.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/alpha_u16_to_alpha.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace alpha_u16 {
void alpha(unsigned short const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::narrow_alpha>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll}, plane{dst, dst_stride, width});
}
} // namespace alpha_u16

} // namespace Processing::FXlib::format_conversion
