// The arithmetic that UYVY to four-byte and to planar RGB have in common: sums in 64ths of a level.
#pragma once

#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/blocks.h"

namespace Processing::FXlib::format_conversion::line {

template <class V>
struct rgb_vectors
{
    V r, g, b;
};

// Eight pixels a lane, 16 bits each, not yet limited to 0..255.
template <bool matrix, class V>
QUILLO_INLINE inline rgb_vectors<V> rgb_64(V uyvy)
{
    using bytes = lane<unsigned char>;
    constexpr auto weights = detail::to_rgb_64<matrix>;
    static constexpr bytes c_offset_x16{128};
    static constexpr bytes c_reorder{0, 2, 0, 2, 4, 6, 4, 6, 8, 10, 8, 10, 12, 14, 12, 14};
    static constexpr lane<unsigned short> y_scale_x16{74 * 256};
    static constexpr lane<unsigned short> y_offset_x16{1192};
    static constexpr bytes r_uv_offset_x16{0, weights.r_v};
    static constexpr bytes g_uv_offset_x16{weights.g_u, weights.g_v};
    static constexpr bytes b_uv_offset_x16{weights.b_u, 0};

    // Unmasked: the chroma byte below each Y adds up to 73/64 of a level.
    auto const luma = sub_16(mul_high_u16(uyvy, V::repeat(y_scale_x16)), V::repeat(y_offset_x16));
    auto const chroma = sub_8(shuffle(uyvy, V::repeat(c_reorder)), V::repeat(c_offset_x16));
    return {
        shift_right_16(add_16(luma, mul_add_u8(V::repeat(r_uv_offset_x16), chroma)), by<6>),
        shift_right_16(sub_16(luma, mul_add_u8(V::repeat(g_uv_offset_x16), chroma)), by<6>),
        // Wraps where white above 238 meets much Cb: blue is then 0.
        shift_right_16(add_16(luma, mul_add_u8(V::repeat(b_uv_offset_x16), chroma)), by<6>),
    };
}

struct rgb_bytes
{
    unsigned char r, g, b;
};

// One pixel behind the last whole block: luma takes nothing from the chroma here, and nothing wraps.
template <processor p, bool matrix>
QUILLO_INLINE inline rgb_bytes rgb_64(int y, int u, int v)
{
    constexpr auto weights = detail::to_rgb_64<matrix>;
    auto const level = [y](int chroma) { return saturate((74 * y - 1192 + chroma) >> 6); };
    return {level(weights.r_v * (v - 128)), level(-weights.g_u * (u - 128) - weights.g_v * (v - 128)),
            level(weights.b_u * (u - 128))};
}

} // namespace Processing::FXlib::format_conversion::line
