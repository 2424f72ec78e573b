#include "lib/format_conversion/line/uyvy_to_r_g_b.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned, bool matrix>
void uyvy::r_g_b(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count)
{
    detail::by_alignment<uyvy_to_planes, matrix>(src_aligned, dst_aligned)(src, r, g, b, count, {});
}

template <bool src_aligned, bool dst_aligned>
void uyvy::r_g_b_601(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count)
{
    r_g_b<src_aligned, dst_aligned, detail::bt601>(src, r, g, b, count);
}

template <bool src_aligned, bool dst_aligned>
void uyvy::r_g_b_709(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count)
{
    r_g_b<src_aligned, dst_aligned, detail::bt709>(src, r, g, b, count);
}

// clang-format off
#define KERNEL(...) template void uyvy::r_g_b<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, unsigned char*, int);
QUILLO_KERNELS(1, KERNEL)
#undef KERNEL
#define KERNEL(...) \
    template void uyvy::r_g_b_601<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, unsigned char*, int); \
    template void uyvy::r_g_b_709<__VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
