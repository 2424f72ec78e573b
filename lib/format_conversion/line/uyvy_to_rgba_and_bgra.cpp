#include "lib/format_conversion/line/uyvy_to_rgba_and_bgra.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned, bool matrix, bool order>
void uyvy::rgba_and_bgra(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<uyvy_to_four_bytes, matrix, order>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned, bool matrix, bool order>
void uyvy_a::rgba_and_bgra(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count)
{
    detail::by_alignment<uyvy_a_to_four_bytes, matrix, order>(src_aligned, dst_aligned)(src, alpha, dst, count, {});
}

// clang-format off
#define NAMED(name, matrix, order) \
    template <bool src_aligned, bool dst_aligned> \
    void uyvy::name(unsigned char const* src, unsigned char* dst, int count) \
    { rgba_and_bgra<src_aligned, dst_aligned, matrix, order>(src, dst, count); } \
    template <bool src_aligned, bool dst_aligned> \
    void uyvy_a::name(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count) \
    { rgba_and_bgra<src_aligned, dst_aligned, matrix, order>(src, alpha, dst, count); }
NAMED(bgra_601, detail::bt601, bgra_order)
NAMED(bgra_709, detail::bt709, bgra_order)
NAMED(rgba_601, detail::bt601, rgba_order)
NAMED(rgba_709, detail::bt709, rgba_order)
#undef NAMED

#define KERNEL(...) \
    template void uyvy::rgba_and_bgra<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy_a::rgba_and_bgra<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(2, KERNEL)
#undef KERNEL
#define KERNEL(...) \
    template void uyvy::bgra_601<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy::bgra_709<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy::rgba_601<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy::rgba_709<__VA_ARGS__>(unsigned char const*, unsigned char*, int); \
    template void uyvy_a::bgra_601<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int); \
    template void uyvy_a::bgra_709<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int); \
    template void uyvy_a::rgba_601<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int); \
    template void uyvy_a::rgba_709<__VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
