// The luma of UYVY.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

struct take_luma
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool expand>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
