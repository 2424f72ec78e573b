#include "lib/format_conversion/y_u_v.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/chroma_merge.h"
#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace y_u_v {
void y_uv(unsigned char const* y, int y_stride, unsigned char const* u, int u_stride, unsigned char const* v,
          int v_stride, unsigned char* dst_y, int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride, int width,
          int height)
{
    int const samples = width / 2;
    y::y(y, y_stride, dst_y, dst_y_stride, width, height);
    walk(samples * 2, height / 2,
         by_alignment<line::merge_chroma>(is_aligned(u, u_stride, v, v_stride), is_aligned(dst_uv, dst_uv_stride)),
         plane{u, u_stride, samples}, plane{v, v_stride, samples}, plane{dst_uv, dst_uv_stride, samples * 2ll});
}

void y_uv_to422(unsigned char const* y, int y_stride, unsigned char const* u, int u_stride, unsigned char const* v,
                int v_stride, unsigned char* dst_y, int dst_y_stride, unsigned char* dst_uv, int dst_uv_stride,
                int width, int height)
{
    int const samples = width / 2;
    y::y(y, y_stride, dst_y, dst_y_stride, width, height);
    auto const twice = [merge = by_alignment<line::merge_chroma>(is_aligned(u, u_stride, v, v_stride),
                                                                 is_aligned(dst_uv, dst_uv_stride))](
                           unsigned char const* u_line, unsigned char const* v_line, unsigned char* above,
                           unsigned char* below, int count, line::access how) {
        merge(u_line, v_line, above, count, how);
        merge(u_line, v_line, below, count, how);
    };
    walk(samples * 2, height / 2, twice, plane{u, u_stride, samples}, plane{v, v_stride, samples},
         upper(dst_uv, dst_uv_stride, samples * 2ll), lower(dst_uv, dst_uv_stride, samples * 2ll));
}
} // namespace y_u_v

} // namespace Processing::FXlib::format_conversion
