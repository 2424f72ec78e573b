// The front ends from RGB, for every layout and matrix that they exist for.
#pragma once

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"
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
    walk(width, height, by_alignment<Kernel, flags...>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 4ll}, plane{dst, dst_stride, width * 2ll});
}

template <bool matrix, bool order>
void rgb_to_uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
                   int alpha_stride, int width, int height, bool* all_opaque)
{
    bool const src_aligned = is_aligned(src, src_stride);
    bool const dst_aligned = is_aligned(dst, dst_stride, alpha, alpha_stride);
    auto const kernel = all_opaque != nullptr
                            ? by_alignment<line::rgb_to_uyvy_a, matrix, order, true>(src_aligned, dst_aligned)
                            : by_alignment<line::rgb_to_uyvy_a, matrix, order, false>(src_aligned, dst_aligned);
    bool const opaque = walk(width, height, kernel, plane{src, src_stride, width * 4ll},
                             plane{dst, dst_stride, width * 2ll}, plane{alpha, alpha_stride, width});
    if (all_opaque != nullptr)
        *all_opaque = opaque;
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
