// Grey bytes to B = G = R, alpha 255.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct spread_grey
{
    static constexpr auto widest = detail::processor::avx2;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
