#include "lib/format_conversion/line/rgb_to_ycbcr444.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned, bool bt709, bool rgba_order, bool crcby_order>
void rgba_and_bgra::ycbcra(unsigned char const* src, unsigned char* dst, int width)
{
    auto const body =
        detail::by_alignment<rgb_to_ycbcr444, bt709, rgba_order, crcby_order, with_alpha>(src_aligned, dst_aligned);
    body(src, dst, width, {});
}

template <bool src_aligned, bool dst_aligned, bool bt709, bool rgba_order, bool crcby_order>
void rgba_and_bgra::ycbcrx(unsigned char const* src, unsigned char* dst, int width)
{
    auto const body =
        detail::by_alignment<rgb_to_ycbcr444, bt709, rgba_order, crcby_order, filled>(src_aligned, dst_aligned);
    body(src, dst, width, {});
}

// clang-format off
#define KERNEL(...) template void rgba_and_bgra::ycbcra<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void rgba_and_bgra::ycbcrx<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(3, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
