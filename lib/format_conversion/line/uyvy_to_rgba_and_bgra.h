// UYVY to four-byte RGB. Whole pairs only: the last pixel of an odd run is left alone.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"
#include "lib/format_conversion/line/rgb_order.h"

namespace Processing::FXlib::format_conversion::line {

namespace uyvy {
// Alpha is 255.
template <bool src_aligned, bool dst_aligned, bool matrix, bool order>
void rgba_and_bgra(unsigned char const* src, unsigned char* dst, int count);

template <bool src_aligned, bool dst_aligned>
void bgra_601(unsigned char const* src, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void bgra_709(unsigned char const* src, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void rgba_601(unsigned char const* src, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void rgba_709(unsigned char const* src, unsigned char* dst, int count);
} // namespace uyvy

namespace uyvy_a {
// src_aligned speaks of the alpha plane too.
template <bool src_aligned, bool dst_aligned, bool matrix, bool order>
void rgba_and_bgra(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);

template <bool src_aligned, bool dst_aligned>
void bgra_601(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void bgra_709(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void rgba_601(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void rgba_709(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
} // namespace uyvy_a

struct uyvy_to_four_bytes
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

struct uyvy_a_to_four_bytes
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
    static void run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
