#include "lib/format_conversion/line/uyvy_a_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void composite_uyvy::run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count,
                         access how)
{
    using words = lane<unsigned short>;
    static constexpr words k_256{256};
    static constexpr words k_1{1};
    static constexpr words high_byte{0xFF00};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 2, how.ahead);
        prefetch<p, 16 * V::lanes>(alpha + at, how.ahead / 2);
        // Source and black are weighted and floored each by itself, chroma in the low byte of a pixel's 16 bits and
        // luma in the high one.
        auto const over_black = [](V uyvy, V alphas) {
            auto const weight = add_16(alphas, V::repeat(k_1)); // 1..256
            auto const rest = sub_16(V::repeat(k_256), weight);
            auto const chroma = mul_high_u16(shift_left_16(uyvy, by<8>), weight);
            auto const luma = mul_low_16(shift_right_u16(uyvy, by<8>), weight) & V::repeat(high_byte);
            auto const black_chroma = shift_right_u16(rest, by<1>);                    // 128 / 256
            auto const black_luma = shift_left_16(rest, by<4>) & V::repeat(high_byte); // 16 / 256
            return add_16(add_16(chroma, black_chroma), add_16(luma, black_luma));
        };
        auto const [first, second] = V::template load_pairs<src_aligned>(src + at * 2);
        auto const alphas = V::template load<src_aligned>(alpha + at);
        V::template store_pairs<dst_aligned, streaming>(dst + at * 2, over_black(first, zip_low_8(alphas, V::zero())),
                                                        over_black(second, zip_high_8(alphas, V::zero())));
    });

    // Floors the distance from black, where the blocks floor the two parts of the sum.
    auto const weighted = [](int value, int black, int a) {
        return static_cast<unsigned char>(((value - black) * (a + 1) >> 8) + black);
    };
    for (; i < count; i += 2)
        for (auto at = i; at < i + 2; ++at) {
            dst[at * 2] = weighted(src[at * 2], 128, alpha[at]);
            dst[at * 2 + 1] = weighted(src[at * 2 + 1], 16, alpha[at]);
        }
}

// clang-format off
#define BODY(...) template void composite_uyvy::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
