#include "lib/format_conversion/line/pair_swap.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void swap_pairs::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned char> swapped{1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};

    auto const done = vectors<p, 16>(count * std::ptrdiff_t{2}, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + at, how.ahead);
        shuffle(V::template load<src_aligned>(src + at), V::repeat(swapped))
            .template store<dst_aligned, streaming>(dst + at);
    });
    for (auto i = done / 2; i < count; ++i) {
        dst[i * 2] = src[i * 2 + 1];
        dst[i * 2 + 1] = src[i * 2];
    }
}

// clang-format off
#define BODY(...) template void swap_pairs::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
