// UYVY to a plane of luma and one or two planes of chroma. Luma and interleaved chroma get a byte a pixel, U and V a
// byte a whole pair.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct split_y_uv
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* y, unsigned char* uv, int count, access how);
};

struct split_y_u_v
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* y, unsigned char* u, unsigned char* v, int count,
                    access how);
};

} // namespace Processing::FXlib::format_conversion::line
