#include "lib/format_conversion/uyvy_a.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/uyvy_a_to_uyvy.h"
#include "lib/format_conversion/line/uyvy_to_444.h"
#include "lib/format_conversion/line/uyvy_to_rgba_and_bgra.h"
#include "lib/format_conversion/line/uyvy_to_ya_uv.h"

namespace Processing::FXlib::format_conversion {

using namespace detail;

namespace uyvy_a {
namespace {

template <class Kernel, bool... flags>
void four_bytes(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
                unsigned char* dst, int dst_stride, int width, int height)
{
    walk(width, height,
         by_alignment<Kernel, flags...>(is_aligned(src, src_stride, alpha, alpha_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll}, plane{alpha, alpha_stride, width}, plane{dst, dst_stride, width * 4ll});
}

} // namespace

void bgra_601(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_four_bytes, bt601, line::bgra_order>(src, src_stride, alpha, alpha_stride, dst,
                                                                    dst_stride, width, height);
}

void bgra_709(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_four_bytes, bt709, line::bgra_order>(src, src_stride, alpha, alpha_stride, dst,
                                                                    dst_stride, width, height);
}

void rgba_601(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_four_bytes, bt601, line::rgba_order>(src, src_stride, alpha, alpha_stride, dst,
                                                                    dst_stride, width, height);
}

void rgba_709(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride,
              unsigned char* dst, int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_four_bytes, bt709, line::rgba_order>(src, src_stride, alpha, alpha_stride, dst,
                                                                    dst_stride, width, height);
}

void bgra(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height, e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? bgra_601 : bgra_709)(src, src_stride, alpha, alpha_stride, dst, dst_stride, width, height);
}

void rgba(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height, e_ycbcr_color_space matrix)
{
    (matrix == ycbcr_601 ? rgba_601 : rgba_709)(src, src_stride, alpha, alpha_stride, dst, dst_stride, width, height);
}

void ya_uv(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* ya,
           int ya_stride, unsigned char* uv, int uv_stride, int width, int height)
{
    walk(width, height,
         by_alignment<line::join_alpha>(is_aligned(src, src_stride, alpha, alpha_stride),
                                        is_aligned(ya, ya_stride, uv, uv_stride)),
         plane{src, src_stride, width * 2ll}, plane{alpha, alpha_stride, width}, plane{ya, ya_stride, width * 2ll},
         plane{uv, uv_stride, width});
}

void uyvy(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
          int dst_stride, int width, int height)
{
    walk(width, height,
         by_alignment<line::composite_uyvy>(is_aligned(src, src_stride, alpha, alpha_stride),
                                            is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 2ll}, plane{alpha, alpha_stride, width},
         plane{dst, dst_stride, width * 2ll, whole_pairs(width)});
}

void ycbcra(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
            int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_444, line::ycbcra_order>(src, src_stride, alpha, alpha_stride, dst, dst_stride, width,
                                                        height);
}

void crcbya(unsigned char const* src, int src_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
            int dst_stride, int width, int height)
{
    four_bytes<line::uyvy_a_to_444, line::crcbya_order>(src, src_stride, alpha, alpha_stride, dst, dst_stride, width,
                                                        height);
}
} // namespace uyvy_a

} // namespace Processing::FXlib::format_conversion
