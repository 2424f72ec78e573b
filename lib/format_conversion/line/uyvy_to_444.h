// UYVY to four-byte 4:4:4 pixels, both pixels of a pair with its chroma. The last pixel of an odd run reads Cr, which
// lies beyond the run.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace uyvy_a {
// src_aligned speaks of the alpha plane too.
template <bool src_aligned, bool dst_aligned>
void crcbya(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
} // namespace uyvy_a

// The fourth byte is 255.
struct uyvy_to_ycbcrx
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

inline constexpr bool ycbcra_order = false;
inline constexpr bool crcbya_order = true;

struct uyvy_a_to_444
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool order>
    static void run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
