#include "lib/format_conversion/line/ycbcr444_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// Where a pixel keeps its components.
template <bool order>
constexpr int Y = order == vuy_order ? 2 : 0;
constexpr int Cb = 1;
template <bool order>
constexpr int Cr = order == vuy_order ? 0 : 2;
constexpr int A = 3;

// Four pixels to two UYVY groups and, above them, the alpha of each of these eight bytes.
template <bool order>
constexpr lane<signed char> reorder{
    Cb,
    Y<order>,
    Cr<order>,
    4 + Y<order>, //
    8 + Cb,
    8 + Y<order>,
    8 + Cr<order>,
    12 + Y<order>, //
    A,
    A,
    4 + A,
    4 + A, //
    8 + A,
    8 + A,
    12 + A,
    12 + A,
};

template <bool order>
QUILLO_INLINE inline void reorder_pair(unsigned char const* src, unsigned char* dst)
{
    dst[0] = src[Cb];
    dst[1] = src[Y<order>];
    dst[2] = src[Cr<order>];
    dst[3] = src[4 + Y<order>];
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned, bool order>
void reorder_444::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    auto i = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const to_uyvy = V::repeat(reorder<order>);
        auto const [first, second] = V::template load_two<src_aligned>(src + at * 4);
        auto const pairs = in_order(zip_low_64(shuffle(first, to_uyvy), shuffle(second, to_uyvy)));
        pairs.template store<dst_aligned, streaming>(dst + at * 2);
    });
    for (; i < count; i += 2)
        reorder_pair<order>(src + i * 4, dst + i * 2);
}

template <processor p, bool src_aligned, bool dst_aligned, bool order>
void composite_444::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned short> k_blk{32768, 4096}; // black times 256
    static constexpr lane<unsigned short> k_256{256}, k_1{1};

    auto i = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const to_uyvy = V::repeat(reorder<order>);
        auto const black = V::repeat(k_blk), all = V::repeat(k_256), one = V::repeat(k_1);
        auto const over_black = [=](V four_pixels) {
            auto const bytes_and_alphas = shuffle(four_pixels, to_uyvy);
            auto const weight = add_16(zip_high_8(bytes_and_alphas, V::zero()), one); // 1..256
            auto const picture = mul_high_u16(zip_low_8(V::zero(), bytes_and_alphas), weight);
            return add_16(mul_high_u16(sub_16(all, weight), black), picture);
        };
        auto const [first, second] = V::template load_two<src_aligned>(src + at * 4);
        auto const pairs = in_order(pack_u8(over_black(first), over_black(second)));
        pairs.template store<dst_aligned, streaming>(dst + at * 2);
    });

    // Floors the distance from black, where the blocks floor the two parts of the sum.
    auto const weighted = [](int value, int black, int alpha) {
        return static_cast<unsigned char>(((value - black) * (alpha + 1) >> 8) + black);
    };
    for (; i < count; i += 2) {
        unsigned char const* const pair = src + i * 4;
        unsigned char* const to = dst + i * 2;
        to[0] = weighted(pair[Cb], 128, pair[A]);
        to[1] = weighted(pair[Y<order>], 16, pair[A]);
        // V is the even pixel's and yet takes the odd pixel's alpha, as its neighbour Y1 does.
        to[2] = weighted(pair[Cr<order>], 128, pair[4 + A]);
        to[3] = weighted(pair[4 + Y<order>], 16, pair[4 + A]);
    }
}

template <processor p, bool src_aligned, bool dst_aligned, bool order, bool test_alpha>
bool split_alpha_444::run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, access how)
{
    running_and<p> every_alpha;
    auto i = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const to_uyvy = V::repeat(reorder<order>);
        auto const [first, second] = V::template load_two<src_aligned>(src + at * 4);
        auto const low = shuffle(first, to_uyvy), high = shuffle(second, to_uyvy);
        in_order(zip_low_64(low, high)).template store<dst_aligned, streaming>(dst + at * 2);
        auto const alphas = zip_high_64(low, high); // A0 A0 A1 A1 A2 A2 A3 A3 | A4 A4 A5 A5 A6 A6 A7 A7
        // Pixels 4..7 of a block have no alpha of their own in the plane, pixel j shows that of pixel j / 2.
        alphas.template store_low_halves_in_order<streaming>(alpha + at);
        if constexpr (test_alpha)
            every_alpha.add(alphas);
    });

    unsigned value = test_alpha ? static_cast<unsigned>(every_alpha.result_in_order().mask_of_255()) : 0;
    for (; i < count; i += 2) {
        reorder_pair<order>(src + i * 4, dst + i * 2);
        alpha[i] = src[i * 4 + A];
        alpha[i + 1] = src[i * 4 + 4 + A];
        value &= unsigned{src[i * 4 + A]} & src[i * 4 + 4 + A];
    }
    // The mask has a bit for each of the sixteen alphas, so a run of nothing but opaque blocks gives 65535 and counts
    // as not opaque; a tail leaves only the bits of pixels 0..3.
    return !test_alpha || value == 255;
}

// clang-format off
#define BODY(...) template void reorder_444::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access); \
    template void composite_444::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
#define BODY(...) template bool split_alpha_444::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(2, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
