// Every set of weights, one row each.
#pragma once

namespace Processing::FXlib::format_conversion::detail {

inline constexpr bool bt601 = false;
inline constexpr bool bt709 = true;

// Sums in 64ths of a level: luma 74 (Y - 16), chroma counted from 128.
struct weights_64
{
    int r_v, g_u, g_v, b_u;
};
template <bool matrix>
inline constexpr weights_64 to_rgb_64 = {102, 25, 52, 128};
// Green takes 53 of Cr, where the matrix alone would give 34, and blue takes the 128 of the other matrix.
template <>
inline constexpr weights_64 to_rgb_64<bt709> = {115, 14, 53, 128};

// One channel in 256ths of a level, nothing counted from its zero: y Y + u Cb + v Cr + constant.
struct weights_256
{
    int y, u, v, constant;
};
struct channels_256
{
    weights_256 r_scale, g_scale, b_scale;
};
template <bool matrix>
inline constexpr channels_256 to_rgb_256 = {
    {298, 0, 409, -223 * 255},
    {298, -99, -207, 136 * 255},
    {298, 517, 0, -277 * 255},
};
// Blue weighs luma with 299, one more than red and green.
template <>
inline constexpr channels_256 to_rgb_256<bt709> = {
    {298, 0, 459, -248 * 255},
    {298, -54, -136, 77 * 255},
    {299, 541, 0, -289 * 255},
};

} // namespace Processing::FXlib::format_conversion::detail
