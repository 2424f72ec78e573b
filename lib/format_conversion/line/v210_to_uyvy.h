// Ten-bit 4:2:2, six pixels in sixteen bytes, to UYVY. The last group of a run gives two pixels when three or four are
// left of the run, four when five or six are, and none for one or two.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct narrow_v210
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
