// 16-bit 4:2:2 in two planes to UYVY: the upper byte of every sample.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct narrow_p216
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned short const* y, unsigned short const* uv, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
