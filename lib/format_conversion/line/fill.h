// A line of one repeated value.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

// Black UYVY. The pixels behind the last sixteen take four bytes each, so up to 30 bytes follow the run.
struct fill_black
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char* dst, int count, access how);
};

// count bytes: value in all whole blocks of 32, rest in those behind them.
struct fill_bytes
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char* dst, unsigned char value, unsigned char rest, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
