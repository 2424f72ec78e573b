#include "lib/format_conversion/line/uyvy_to_bgr.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned, bool matrix>
void uyvy::bgr(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<uyvy_to_three_bytes, matrix>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned>
void uyvy::bgr_601(unsigned char const* src, unsigned char* dst, int count)
{
    bgr<src_aligned, dst_aligned, detail::bt601>(src, dst, count);
}

template <bool src_aligned, bool dst_aligned>
void uyvy::bgr_709(unsigned char const* src, unsigned char* dst, int count)
{
    bgr<src_aligned, dst_aligned, detail::bt709>(src, dst, count);
}

// clang-format off
#define KERNEL(...) template void uyvy::bgr<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(1, KERNEL)
#undef KERNEL
#define KERNEL(...) \
    template void uyvy::bgr_601<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy::bgr_709<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
