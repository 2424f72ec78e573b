// UYVY composited over black by an alpha plane. An odd run converts its whole last pair.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace uyvy_a {
// src_aligned speaks of the alpha plane too.
template <bool src_aligned, bool dst_aligned>
void uyvy(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count);
} // namespace uyvy_a

struct composite_uyvy
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
