#include "lib/format_conversion/line/grey_to_bgra.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void spread_grey::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned char> shfl_0{0, 0, 0, 128, 1, 1, 1, 128, 2, 2, 2, 128, 3, 3, 3, 128};
    static constexpr lane<unsigned char> shfl_1{4, 4, 4, 128, 5, 5, 5, 128, 6, 6, 6, 128, 7, 7, 7, 128};
    static constexpr lane<unsigned char> shfl_2{8, 8, 8, 128, 9, 9, 9, 128, 10, 10, 10, 128, 11, 11, 11, 128};
    static constexpr lane<unsigned char> shfl_3{12, 12, 12, 128, 13, 13, 13, 128, 14, 14, 14, 128, 15, 15, 15, 128};
    static constexpr lane<unsigned> mask_alpha{0xFF000000};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + at, how.ahead);
        auto const grey = V::template load<src_aligned>(src + at);
        auto const four = [&](lane<unsigned char> const& which) {
            return shuffle(grey, V::repeat(which)) | V::repeat(mask_alpha);
        };
        V::template store_quads<dst_aligned, streaming>(dst + at * 4, four(shfl_0), four(shfl_1), four(shfl_2),
                                                        four(shfl_3));
    });
    for (; i < count; ++i) {
        dst[i * 4] = dst[i * 4 + 1] = dst[i * 4 + 2] = src[i];
        dst[i * 4 + 3] = 255;
    }
}

// clang-format off
#define BODY(...) template void spread_grey::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
