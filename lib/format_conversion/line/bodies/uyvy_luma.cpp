#include "lib/format_conversion/line/uyvy_luma.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/expanded_luma.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned, bool expand>
void take_luma::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    auto i = blocks<p, 32>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        for (int half = 0; half < 2; ++half) {
            auto const from = at + half * 16 * V::lanes;
            if constexpr (fetched_ahead<p, streaming>)
                prefetch<p, 32 * V::lanes>(src + from * 2, how.ahead);
            auto const luma = [&](std::ptrdiff_t of) {
                auto const uyvy = V::template load<src_aligned>(src + of * 2);
                return expand ? expanded_luma(uyvy) : shift_right_u16(uyvy, by<8>);
            };
            pack_all_u8(luma(from), luma(from + 8 * V::lanes)).template store<dst_aligned, streaming>(dst + from);
        }
    });

    for (; i < count; ++i) {
        int const y = src[i * 2 + 1];
        // Unshifted behind the last whole block: 18 and above is white there.
        dst[i] = expand ? saturate(expanded_luma_256<p>(y)) : static_cast<unsigned char>(y);
    }
}

// clang-format off
#define BODY(...) template void take_luma::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
