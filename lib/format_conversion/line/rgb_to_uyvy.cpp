#include "lib/format_conversion/line/rgb_to_uyvy.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/line/instances.h"

#pragma GCC diagnostic ignored "-Wignored-qualifiers"

namespace Processing::FXlib::format_conversion::line {

using detail::by_alignment;

template <bool src_aligned, bool dst_aligned, bool premultiply, bool bt709, bool rgba_order>
void rgba_and_bgra::uyvy(unsigned char const* src, unsigned char* dst, int width)
{
    static_assert(bt709 || !premultiply);
    if constexpr (premultiply)
        by_alignment<rgb_over_black_to_uyvy, rgba_order>(src_aligned, dst_aligned)(src, dst, width, {});
    else
        by_alignment<rgb_to_uyvy, bt709, rgba_order>(src_aligned, dst_aligned)(src, dst, width, {});
}

template <bool src_aligned, bool dst_aligned, bool bt709, bool test_alpha, bool rgba_order>
bool const rgba_and_bgra::uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width)
{
    auto const body = by_alignment<rgb_to_uyvy_a, bt709, rgba_order, test_alpha>(src_aligned, dst_aligned);
    return body(src, dst, alpha, width, {});
}

template <bool src_aligned, bool dst_aligned, bool bt709>
void bgr::uyvy(unsigned char const* src, unsigned char* dst, int width)
{
    static_assert(bt709);
    by_alignment<bgr_to_uyvy>(src_aligned, dst_aligned)(src, dst, width, {});
}

// clang-format off
#define KERNEL(...) template void rgba_and_bgra::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS_WITH(KERNEL, true, true, false)
QUILLO_KERNELS_WITH(KERNEL, true, true, true)
QUILLO_KERNELS_WITH(KERNEL, false, true, false)
QUILLO_KERNELS_WITH(KERNEL, false, true, true)
QUILLO_KERNELS_WITH(KERNEL, false, false, false)
QUILLO_KERNELS_WITH(KERNEL, false, false, true)
#undef KERNEL
#define KERNEL(...) template bool const rgba_and_bgra::uyvy_a<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int);
QUILLO_KERNELS(3, KERNEL)
#undef KERNEL
#define KERNEL(...) template void bgr::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS_WITH(KERNEL, true)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
