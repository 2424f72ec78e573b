// UYVY to three-byte BGR, exact sums in 256ths of a level. An odd run reads its whole last pair and writes it, three
// bytes beyond the run.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace uyvy {
template <bool src_aligned, bool dst_aligned, bool matrix>
void bgr(unsigned char const* src, unsigned char* dst, int count);

template <bool src_aligned, bool dst_aligned>
void bgr_601(unsigned char const* src, unsigned char* dst, int count);
template <bool src_aligned, bool dst_aligned>
void bgr_709(unsigned char const* src, unsigned char* dst, int count);
} // namespace uyvy

struct uyvy_to_three_bytes
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
