// RGB pixels to four-byte YCbCr, one for one.
//
// Pixels beyond the run's last whole block of eight: their Cb and fourth byte stand where they belong, their Y and Cr
// go to bytes 0 and 2 of the run's first pixel, and their own bytes 0 and 2 keep what they held.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace rgba_and_bgra {
// Byte 3 is the source's.
template <bool src_aligned, bool dst_aligned, bool bt709, bool rgba_order, bool crcby_order>
void ycbcra(unsigned char const* src, unsigned char* dst, int width);

// Byte 3 is 255.
template <bool src_aligned, bool dst_aligned, bool bt709, bool rgba_order, bool crcby_order>
void ycbcrx(unsigned char const* src, unsigned char* dst, int width);
} // namespace rgba_and_bgra

inline constexpr bool filled = false;
inline constexpr bool with_alpha = true;

struct rgb_to_ycbcr444
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order, bool crcby_order,
              bool fourth_byte>
    static void run(unsigned char const* src, unsigned char* dst, int width, access how);
};

} // namespace Processing::FXlib::format_conversion::line
