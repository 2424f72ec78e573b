// Studio-range luma widened to full range: 17 becomes 0 and 234 becomes 255.
#pragma once

#include "lib/format_conversion/line/blocks.h"

namespace Processing::FXlib::format_conversion::line {

// The luma of eight UYVY pixels a lane, expanded, 16 bits each.
template <class V>
QUILLO_INLINE inline V expanded_luma(V uyvy)
{
    static constexpr lane<unsigned char> chroma_and_black{255, 17};
    static constexpr lane<unsigned short> scale{301};
    static constexpr lane<unsigned short> white{255};
    return min_16(mul_high_u16(subs_u8(uyvy, V::repeat(chroma_and_black)), V::repeat(scale)), V::repeat(white));
}

// In 256ths of a level, not limited.
template <processor p>
constexpr int expanded_luma_256(int y)
{
    return 301 * (y - 17);
}

} // namespace Processing::FXlib::format_conversion::line
