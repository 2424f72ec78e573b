// A line of U and a line of V interleaved, for an even count of pixels.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct merge_chroma
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* u, unsigned char const* v, unsigned char* uv, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
