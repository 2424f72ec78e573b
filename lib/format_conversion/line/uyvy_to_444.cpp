#include "lib/format_conversion/line/uyvy_to_444.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned>
void uyvy_a::crcbya(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count)
{
    detail::by_alignment<uyvy_a_to_444, crcbya_order>(src_aligned, dst_aligned)(src, alpha, dst, count, {});
}

// clang-format off
#define KERNEL(...) template void uyvy_a::crcbya<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
