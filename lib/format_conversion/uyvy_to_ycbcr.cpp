#include "lib/format_conversion/uyvy.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/line/pair_swap.h"
#include "lib/format_conversion/line/uyvy_luma.h"
#include "lib/format_conversion/line/uyvy_split.h"
#include "lib/format_conversion/line/uyvy_to_444.h"
#include "lib/format_conversion/line/uyvy_to_ya_uv.h"
#include "lib/format_conversion/y.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace uyvy {
void uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    y::y(src, src_stride, dst, dst_stride, width * 2, height);
}

void yuy2(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::swap_pairs>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll}, plane{dst, dst_stride, width * 2ll});
}

void y_uv_422(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* uv,
              int uv_stride, int width, int height)
{
    walk(width, height,
         by_alignment<line::split_y_uv>(is_aligned(src, src_stride), is_aligned(y, y_stride, uv, uv_stride)),
         plane{src, src_stride, width * 2ll}, plane{y, y_stride, width}, plane{uv, uv_stride, width});
}

void y_u_v_422(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* u, int u_stride,
               unsigned char* v, int v_stride, int width, int height)
{
    bool const dst_aligned = is_aligned(y, y_stride, u, u_stride) && is_aligned(v, v_stride);
    walk(width, height, by_alignment<line::split_y_u_v>(is_aligned(src, src_stride), dst_aligned),
         plane{src, src_stride, width * 2ll}, plane{y, y_stride, width}, plane{u, u_stride, width / 2},
         plane{v, v_stride, width / 2});
}

// The lower line of each two gives its luma only.
void y_uv_420(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* uv,
              int uv_stride, int width, int height)
{
    auto const src_aligned = is_aligned(src, src_stride), dst_aligned = is_aligned(y, y_stride, uv, uv_stride);
    auto const two_lines = [split = by_alignment<line::split_y_uv>(src_aligned, dst_aligned),
                            luma = by_alignment<line::take_luma, false>(src_aligned, dst_aligned)](
                               unsigned char const* above, unsigned char const* below, unsigned char* y_above,
                               unsigned char* y_below, unsigned char* chroma, int count, line::access how) {
        split(above, y_above, chroma, count, how);
        luma(below, y_below, count, how);
    };
    walk(width, height / 2, two_lines, upper(src, src_stride, width * 2ll), lower(src, src_stride, width * 2ll),
         upper(y, y_stride, width), lower(y, y_stride, width), plane{uv, uv_stride, width});
    if (height % 2 == 1)
        y_uv_422(last(src, src_stride, height), src_stride, last(y, y_stride, height), y_stride,
                 last(uv, uv_stride, (height + 1) / 2), uv_stride, width, 1);
}

void y_u_v_420(unsigned char const* src, int src_stride, unsigned char* y, int y_stride, unsigned char* u, int u_stride,
               unsigned char* v, int v_stride, int width, int height)
{
    auto const src_aligned = is_aligned(src, src_stride);
    auto const dst_aligned = is_aligned(y, y_stride, u, u_stride) && is_aligned(v, v_stride);
    auto const two_lines = [split = by_alignment<line::split_y_u_v>(src_aligned, dst_aligned),
                            luma = by_alignment<line::take_luma, false>(src_aligned, dst_aligned)](
                               unsigned char const* above, unsigned char const* below, unsigned char* y_above,
                               unsigned char* y_below, unsigned char* u_line, unsigned char* v_line, int count,
                               line::access how) {
        split(above, y_above, u_line, v_line, count, how);
        luma(below, y_below, count, how);
    };
    walk(width, height / 2, two_lines, upper(src, src_stride, width * 2ll), lower(src, src_stride, width * 2ll),
         upper(y, y_stride, width), lower(y, y_stride, width), plane{u, u_stride, width / 2},
         plane{v, v_stride, width / 2});
    if (height % 2 == 1)
        y_u_v_422(last(src, src_stride, height), src_stride, last(y, y_stride, height), y_stride,
                  last(u, u_stride, (height + 1) / 2), u_stride, last(v, v_stride, (height + 1) / 2), v_stride, width,
                  1);
}

void y(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height, bool expand)
{
    auto const src_aligned = is_aligned(src, src_stride), dst_aligned = is_aligned(dst, dst_stride);
    walk(width, height,
         expand ? by_alignment<line::take_luma, true>(src_aligned, dst_aligned)
                : by_alignment<line::take_luma, false>(src_aligned, dst_aligned),
         plane{src, src_stride, width * 2ll}, plane{dst, dst_stride, width});
}

void ycbcrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height, by_alignment<line::uyvy_to_ycbcrx>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll}, plane{dst, dst_stride, width * 4ll});
}

void ya_uv(unsigned char const* src, int src_stride, unsigned char const* key, int key_stride, unsigned char* ya,
           int ya_stride, unsigned char* uv, int uv_stride, int width, int height, bool expand)
{
    auto const src_aligned = is_aligned(src, src_stride, key, key_stride);
    auto const dst_aligned = is_aligned(ya, ya_stride, uv, uv_stride);
    walk(width, height,
         expand ? by_alignment<line::join_key, true>(src_aligned, dst_aligned)
                : by_alignment<line::join_key, false>(src_aligned, dst_aligned),
         plane{src, src_stride, width * 2ll}, plane{key, key_stride, width * 2ll}, plane{ya, ya_stride, width * 2ll},
         plane{uv, uv_stride, width});
}
} // namespace uyvy

} // namespace Processing::FXlib::format_conversion
