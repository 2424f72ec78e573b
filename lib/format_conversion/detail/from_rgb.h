// The front ends from RGB, for every layout and matrix that they exist for.
#pragma once

#include "lib/format_conversion/detail/to_uyvy.h"
#include "lib/format_conversion/line/rgb_to_uyvy.h"
#include "lib/format_conversion/line/rgb_to_ycbcr444.h"

namespace Processing::FXlib::format_conversion::detail {

using line::bgra_order;
using line::filled;
using line::rgba_order;
using line::with_alpha;

inline constexpr bool ycbcr_order = false;
inline constexpr bool crcby_order = true;

template <class Kernel, bool... flags>
void rgb_to_uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height)
{
    to_uyvy<Kernel, flags...>(src, src_stride, dst, dst_stride, width, height, width);
}

template <bool matrix, bool order>
void rgb_to_uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
                   int alpha_stride, int width, int height, bool* all_opaque)
{
    to_uyvy_a<line::rgb_to_uyvy_a, matrix, order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height,
                                                  all_opaque, width);
}

template <bool matrix, bool order, bool target_order, bool fourth_byte>
void rgb_to_ycbcr444(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width,
                     int height)
{
    // A single line counts as aligned.
    bool const src_aligned = height == 1 || is_aligned(src, src_stride);
    bool const dst_aligned = height == 1 || is_aligned(dst, dst_stride);
    walk(width, height,
         by_alignment<line::rgb_to_ycbcr444, matrix, order, target_order, fourth_byte>(src_aligned, dst_aligned),
         plane{src, src_stride, width * 4ll}, plane{dst, dst_stride, width * 4ll});
}

} // namespace Processing::FXlib::format_conversion::detail
