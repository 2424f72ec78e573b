// Weighted sums of RGB pixels, in vectors and one by one.
#pragma once

#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/rgb_to_uyvy.h"

namespace Processing::FXlib::format_conversion::line {

// The weights of one pixel, then those of the next, as four-byte pixels have their components. Byte 3 has none.
template <bool order>
constexpr lane<signed char> in_source_order(detail::rgb even, detail::rgb odd)
{
    if (order == rgba_order)
        return {even.r, even.g, even.b, 0, odd.r, odd.g, odd.b, 0};
    return {even.b, even.g, even.r, 0, odd.b, odd.g, odd.r, 0};
}

template <bool order>
constexpr lane<signed char> in_source_order(detail::rgb every)
{
    return in_source_order<order>(every, every);
}

template <processor p, bool order>
QUILLO_INLINE inline int weighted_sum(detail::rgb weights, unsigned char const* pixel)
{
    int const first = order == rgba_order ? weights.r : weights.b, third = order == rgba_order ? weights.b : weights.r;
    return first * pixel[0] + weights.g * pixel[1] + third * pixel[2];
}

} // namespace Processing::FXlib::format_conversion::line
