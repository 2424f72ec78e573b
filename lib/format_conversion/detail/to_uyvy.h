// The front ends from four-byte pixels to UYVY, with and without a plane of alphas. A line writes as many pixels as
// `written` says, which may be one more than the picture is wide.
#pragma once

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/picture_walk.h"

namespace Processing::FXlib::format_conversion::detail {

template <class Kernel, bool... flags>
void to_uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width, int height,
             long long written)
{
    walk(width, height, by_alignment<Kernel, flags...>(is_aligned(src, src_stride), is_aligned(dst, dst_stride)),
         plane{src, src_stride, width * 4ll}, plane{dst, dst_stride, width * 2ll, written * 2});
}

// The kernel's last flag says whether alpha is tested.
template <class Kernel, bool... flags>
void to_uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, unsigned char* alpha,
               int alpha_stride, int width, int height, bool* all_opaque, long long written)
{
    bool const src_aligned = is_aligned(src, src_stride);
    bool const dst_aligned = is_aligned(dst, dst_stride, alpha, alpha_stride);
    auto const kernel = all_opaque != nullptr ? by_alignment<Kernel, flags..., true>(src_aligned, dst_aligned)
                                              : by_alignment<Kernel, flags..., false>(src_aligned, dst_aligned);
    bool const opaque =
        walk(width, height, kernel, plane{src, src_stride, width * 4ll},
             plane{dst, dst_stride, width * 2ll, written * 2}, plane{alpha, alpha_stride, width, written});
    if (all_opaque != nullptr)
        *all_opaque = opaque;
}

} // namespace Processing::FXlib::format_conversion::detail
