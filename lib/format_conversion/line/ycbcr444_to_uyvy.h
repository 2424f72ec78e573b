// Four-byte 4:4:4 pixels to UYVY: chroma from the even pixel of each pair. An odd run reads one pixel beyond its end
// and writes a whole last pair.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace ycbcra {
// Composited over black.
template <bool src_aligned, bool dst_aligned>
void uyvy(unsigned char const* src, unsigned char* dst, int count);

// Alpha goes to its own plane. With test_alpha the result is whether the run counts as opaque, else true.
template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count);
} // namespace ycbcra

namespace vuya {
template <bool src_aligned, bool dst_aligned>
void uyvy(unsigned char const* src, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count);
} // namespace vuya

// The fourth byte is ignored.
namespace ycbcrx {
template <bool src_aligned, bool dst_aligned>
void uyvy(unsigned char const* src, unsigned char* dst, int count);
} // namespace ycbcrx

namespace vuyx {
template <bool src_aligned, bool dst_aligned>
void uyvy(unsigned char const* src, unsigned char* dst, int count);
} // namespace vuyx

inline constexpr bool ycbcr_order = false;
inline constexpr bool vuy_order = true;

struct reorder_444
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool order>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

struct composite_444
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool order>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

struct split_alpha_444
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool order, bool test_alpha>
    static bool run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
