// RGB pixels to UYVY: U from the left pixel of each pair alone, V from the right one alone.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/access.h"
#include "lib/format_conversion/line/rgb_order.h"

// The results are spelled with their const.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"

namespace Processing::FXlib::format_conversion::line {

namespace rgba_and_bgra {
// A last odd pixel is neither read nor converted. Exists for BT.709 with premultiply and for both matrices without.
template <bool src_aligned, bool dst_aligned, bool premultiply, bool bt709, bool rgba_order>
void uyvy(unsigned char const* src, unsigned char* dst, int width);

// The same without premultiplying, and alpha to its own plane. With test_alpha the result is whether there was a pair
// and the alpha of every pair was 255, else it means nothing.
template <bool src_aligned, bool dst_aligned, bool bt709, bool test_alpha, bool rgba_order>
bool const uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width);
} // namespace rgba_and_bgra

namespace bgr {
// Exists for BT.709. An odd width reads three bytes beyond the run and writes a whole last pair.
template <bool src_aligned, bool dst_aligned, bool bt709>
void uyvy(unsigned char const* src, unsigned char* dst, int width);
} // namespace bgr

struct rgb_to_uyvy
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
    static void run(unsigned char const* src, unsigned char* dst, int width, access how);
};

struct rgb_over_black_to_uyvy
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool order>
    static void run(unsigned char const* src, unsigned char* dst, int width, access how);
};

struct rgb_to_uyvy_a
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order, bool test_alpha>
    static bool run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how);
};

struct bgr_to_uyvy
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* dst, int width, access how);
};

} // namespace Processing::FXlib::format_conversion::line

#pragma GCC diagnostic pop
