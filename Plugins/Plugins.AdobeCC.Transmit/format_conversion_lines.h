// One line of each of the plug-in's own converters, for every processor that the conversion library is built for.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

// Whether what a line has seen lets the picture count as opaque: the AND of all lines' words is looked at.
constexpr int opaque_word = 0x100FF;

// B, G, R, A to UYVY and alphas. An odd width takes a whole last pair.
struct split_bgra
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static int run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how);
};

// Cr, Cb, Y, A to UYVY and alphas. An odd width takes a whole last pair.
struct split_yuya
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static int run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how);
};

// UYVY by its alphas over the UYVY that is in dst.
struct blend_uyvy
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* fg, unsigned char const* alpha, unsigned char* dst, int width, access how);
};

} // namespace Processing::FXlib::format_conversion::line
