// The front ends from four-byte YCbCr, for both orders that it exists in. A last odd pixel takes a whole pair.
#pragma once

#include "lib/format_conversion/detail/to_uyvy.h"
#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"

namespace Processing::FXlib::format_conversion::detail {

using line::vuy_order;
using line::ycbcr_order;

template <class Kernel, bool order>
void ycbcr444_to_uyvy(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride, int width,
                      int height)
{
    to_uyvy<Kernel, order>(src, src_stride, dst, dst_stride, width, height, whole_pairs(width) / 2);
}

template <bool order>
void ycbcr444_to_uyvy_a(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                        unsigned char* alpha, int alpha_stride, int width, int height, bool* all_opaque)
{
    to_uyvy_a<line::split_alpha_444, order>(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height,
                                            all_opaque, whole_pairs(width) / 2);
}

} // namespace Processing::FXlib::format_conversion::detail
