// Copies of bytes, and of four-byte pixels with a test of their alpha.
#pragma once

#include "lib/format_conversion/detail/processor.h"
#include "lib/format_conversion/line/access.h"

namespace Processing::FXlib::format_conversion::line {

namespace y {
// Copies count bytes.
template <bool src_aligned, bool dst_aligned>
void y(unsigned char const* src, unsigned char* dst, int count);
} // namespace y

namespace bgra {
// Copies count pixels. With test_alpha the result is whether byte 3 of every one is 255, else true.
template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool bgra(unsigned char const* src, unsigned char* dst, int count);
} // namespace bgra

struct copy_bytes
{
    static constexpr auto widest = detail::processor::avx2;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static void run(unsigned char const* src, unsigned char* dst, int count, access how);
};

struct copy_testing_alpha
{
    static constexpr auto widest = detail::processor::avx512;
    template <detail::processor p, bool src_aligned, bool dst_aligned>
    static bool run(unsigned char const* src, unsigned char* dst, int count, access how);
};

} // namespace Processing::FXlib::format_conversion::line
