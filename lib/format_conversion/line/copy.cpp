#include "lib/format_conversion/line/copy.h"

#include "lib/format_conversion/detail/by_alignment.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <bool src_aligned, bool dst_aligned>
void y::y(unsigned char const* src, unsigned char* dst, int count)
{
    detail::by_alignment<copy_bytes>(src_aligned, dst_aligned)(src, dst, count, {});
}

template <bool src_aligned, bool dst_aligned, bool test_alpha>
bool bgra::bgra(unsigned char const* src, unsigned char* dst, int count)
{
    if constexpr (test_alpha)
        return detail::by_alignment<copy_testing_alpha>(src_aligned, dst_aligned)(src, dst, count, {});
    y::y<src_aligned, dst_aligned>(src, dst, count * 4);
    return true;
}

// clang-format off
#define KERNEL(...) template void y::y<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(0, KERNEL)
#undef KERNEL
#define KERNEL(...) template bool bgra::bgra<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
QUILLO_KERNELS(1, KERNEL)
#undef KERNEL
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
