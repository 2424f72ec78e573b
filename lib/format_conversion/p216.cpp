#include "lib/format_conversion/p216.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/p216_to_uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace p216 {
void uyvy(unsigned short const* y, int y_stride, unsigned short const* uv, int uv_stride, unsigned char* dst,
          int dst_stride, int width, int height)
{
    walk(width, height,
         by_alignment<line::narrow_p216>(is_aligned(y, y_stride) && is_aligned(uv, uv_stride),
                                         is_aligned(dst, dst_stride)),
         plane{y, y_stride, width * 2ll},
         // One run only with chroma lines twice as far apart as they are long.
         plane{uv, uv_stride, width * 4ll}, plane{dst, dst_stride, width * 2ll});
}
} // namespace p216

} // namespace Processing::FXlib::format_conversion
