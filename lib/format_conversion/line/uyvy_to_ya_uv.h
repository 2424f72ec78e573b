// UYVY and an alpha to luma and alpha interleaved, and a plane of interleaved chroma.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

// Alpha is the luma of a key image; expand widens it, and it alone.
struct join_key
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool expand>
    static void run(unsigned char const* src, unsigned char const* key, unsigned char* ya, unsigned char* uv, int count,
                    access how);
};

struct join_alpha
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char const* alpha, unsigned char* ya, unsigned char* uv,
                    int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
