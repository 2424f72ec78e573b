// Every set of weights, one row each.
#pragma once

namespace Processing::FXlib::format_conversion::detail {

inline constexpr bool bt601 = false;
inline constexpr bool bt709 = true;

// Luma and chroma of an RGB pixel. Luma is in 128ths of a level (fine: in 256ths), chroma in 256ths.
struct rgb
{
    int r, g, b;
};
struct weights_of_rgb
{
    rgb y, cb, cr;
};
template <bool matrix>
inline constexpr weights_of_rgb from_rgb = {{33, 64, 13}, {-38, -75, 112}, {112, -94, -18}};
template <>
inline constexpr weights_of_rgb from_rgb<bt709> = {{23, 79, 8}, {-26, -87, 112}, {112, -102, -10}};
// Green is 80, so the premultiplied weights sum to 111.
inline constexpr weights_of_rgb from_rgb_premultiplied = {{23, 80, 8}, {-26, -87, 112}, {112, -102, -10}};
inline constexpr weights_of_rgb from_rgb_fine = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};

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
