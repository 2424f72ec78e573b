#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned>
void ycbcrx::uyvy(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<reorder_444, ycbcr_order>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned>
void ycbcra::uyvy(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<composite_444, ycbcr_order>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool ycbcra::uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count)
{
    auto const body = detail::by_alignment<split_alpha_444, ycbcr_order, test_alpha>(src_aligned, dst_aligned);
    return body(src, dst, alpha, count, {});
}

template <bool src_aligned, bool dst_aligned>
void vuyx::uyvy(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<reorder_444, vuy_order>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned>
void vuya::uyvy(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<composite_444, vuy_order>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool vuya::uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count)
{
    auto const body = detail::by_alignment<split_alpha_444, vuy_order, test_alpha>(src_aligned, dst_aligned);
    return body(src, dst, alpha, count, {});
}

// clang-format off
#define KERNEL(...) template void ycbcrx::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void ycbcra::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void vuyx::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void vuya::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
#define KERNEL(...) template bool ycbcra::uyvy_a<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int); \
    template bool vuya::uyvy_a<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int);
QUILLO_KERNELS(1, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
