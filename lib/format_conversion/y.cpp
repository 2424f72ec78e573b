#include "lib/format_conversion/y.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/copy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace y {
void y(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::copy_bytes>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width}, plane{dst, dst_stride, width});
}
} // namespace y

} // namespace Processing::FXlib::format_conversion
