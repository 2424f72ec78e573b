#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/uyvy_to_bgr.h"
#include "lib/format_conversion/line/uyvy_to_r_g_b.h"
#include "lib/format_conversion/line/uyvy_to_rgba_and_bgra.h"
#include "lib/format_conversion/uyvy.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace uyvy {
namespace {

template <bool matrix, bool order>
void four_bytes(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(
        width, height,
        by_alignment<line::uyvy_to_four_bytes, matrix, order>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
        plane{src, src_stride, width * 2ll}, plane{dst, dst_stride, width * 4ll});
}

template <bool matrix>
void three_bytes(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height,
         by_alignment<line::uyvy_to_three_bytes, matrix>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll},
         // Without gaps means four bytes a pixel here too: only such a picture is one run.
         plane{dst, dst_stride, width * 4ll, whole_pairs(width) / 2 * 3});
}

template <bool matrix>
void planes(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
            int plane_stride, int width, int height)
{
    bool const dst_aligned = is_aligned(r, plane_stride, g, plane_stride) && is_aligned(b, plane_stride);
    walk(width, height, by_alignment<line::uyvy_to_planes, matrix>(is_aligned(src, src_stride), dst_aligned),
         plane{src, src_stride, width * 2ll}, plane{r, plane_stride, width}, plane{g, plane_stride, width},
         plane{b, plane_stride, width});
}

} // namespace

void bgra_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<bt601, line::bgra_order>(src, src_stride, dst, dst_stride, width, height);
}

void bgra_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<bt709, line::bgra_order>(src, src_stride, dst, dst_stride, width, height);
}

void rgba_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<bt601, line::rgba_order>(src, src_stride, dst, dst_stride, width, height);
}

void rgba_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<bt709, line::rgba_order>(src, src_stride, dst, dst_stride, width, height);
}

void bgrx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgra_601(src, src_stride, dst, dst_stride, width, height);
}

void bgrx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    bgra_709(src, src_stride, dst, dst_stride, width, height);
}

void rgbx_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgba_601(src, src_stride, dst, dst_stride, width, height);
}

void rgbx_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    rgba_709(src, src_stride, dst, dst_stride, width, height);
}

void bgr_601(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    three_bytes<bt601>(src, src_stride, dst, dst_stride, width, height);
}

void bgr_709(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    three_bytes<bt709>(src, src_stride, dst, dst_stride, width, height);
}

void r_g_b_601(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
               int plane_stride, int width, int height)
{
    planes<bt601>(src, src_stride, r, g, b, plane_stride, width, height);
}

void r_g_b_709(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
               int plane_stride, int width, int height)
{
    planes<bt709>(src, src_stride, r, g, b, plane_stride, width, height);
}

void bgra(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? bgra_601 : bgra_709)(src, src_stride, dst, dst_stride, width, height);
}

void rgba(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? rgba_601 : rgba_709)(src, src_stride, dst, dst_stride, width, height);
}

void bgrx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? bgrx_601 : bgrx_709)(src, src_stride, dst, dst_stride, width, height);
}

void rgbx(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
          e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? rgbx_601 : rgbx_709)(src, src_stride, dst, dst_stride, width, height);
}

void bgr(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
         e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? bgr_601 : bgr_709)(src, src_stride, dst, dst_stride, width, height);
}

void r_g_b(unsigned char const* src, int src_stride, unsigned char* r, unsigned char* g, unsigned char* b,
           int plane_stride, int width, int height, e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_709 ? r_g_b_709 : r_g_b_601)(src, src_stride, r, g, b, plane_stride, width, height);
}

} // namespace uyvy

} // namespace Processing::FXlib::format_conversion
