#include "lib/format_conversion/y_uv.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/copy.h"
#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace y_uv {
void y_uv(unsigned char const* y, int y_stride, unsigned char const* uv, int uv_stride, unsigned char* dst_y,
          int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width, int height)
{
    y::y(y, y_stride, dst_y, dst_y_stride, width, height);
    y::y(uv, uv_stride, dst_uv, dst_uv_stride, width / 2 * 2, height / 2);
}

void y_uv_to422(unsigned char const* y, int y_stride, unsigned char const* uv, int uv_stride, unsigned char* dst_y,
                int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width, int height)
{
    y::y(y, y_stride, dst_y, dst_y_stride, width, height);
    auto const twice =
        [copy = by_alignment<line::copy_bytes>(is_aligned(uv, uv_stride), is_aligned(dst_uv, dst_uv_stride))](
            unsigned char const* from, unsigned char* above, unsigned char* below, int count, line::access how) {
            copy(from, above, count, how);
            copy(from, below, count, how);
        };
    walk(width, height / 2, twice, plane{uv, uv_stride, width}, upper(dst_uv, dst_uv_stride, width),
         lower(dst_uv, dst_uv_stride, width));
}
} // namespace y_uv

} // namespace Processing::FXlib::format_conversion
