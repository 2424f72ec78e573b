#include "lib/format_conversion/line/y_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned, bool compress>
void add_grey_chroma::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned char> grey{128};
    static constexpr lane<unsigned short> scale{220};
    static constexpr lane<unsigned short> high_byte{0xFF00};
    static constexpr lane<unsigned char> grey_and_black{128, 16};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + at, how.ahead);
        auto const luma = V::template load<src_aligned>(src + at);
        auto const compressed = [](V eight) {
            return add_16(mul_low_16(eight, V::repeat(scale)) & V::repeat(high_byte), V::repeat(grey_and_black));
        };
        if constexpr (compress)
            V::template store_pairs<dst_aligned, streaming>(dst + at * 2, compressed(zip_low_8(luma, V::zero())),
                                                            compressed(zip_high_8(luma, V::zero())));
        else
            V::template store_pairs<dst_aligned, streaming>(dst + at * 2, zip_low_8(V::repeat(grey), luma),
                                                            zip_high_8(V::repeat(grey), luma));
    });
    for (; i < count; ++i) {
        dst[i * 2] = 128;
        dst[i * 2 + 1] = static_cast<unsigned char>(compress ? (220 * src[i] >> 8) + 16 : src[i]);
    }
}

// clang-format off
#define BODY(...) template void add_grey_chroma::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
