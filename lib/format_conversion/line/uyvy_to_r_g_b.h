// UYVY to three planes of R, G and B. Whole pairs only: the last pixel of an odd run is left alone.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace uyvy {
// dst_aligned speaks of all three planes.
template <bool src_aligned, bool dst_aligned, bool matrix>
void r_g_b(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count);

template <bool src_aligned, bool dst_aligned>
void r_g_b_601(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count);
template <bool src_aligned, bool dst_aligned>
void r_g_b_709(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count);
} // namespace uyvy

struct uyvy_to_planes
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned, bool matrix>
    static void run(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count,
                    access how);
};

} // namespace Processing::FXlib::format_conversion::line
