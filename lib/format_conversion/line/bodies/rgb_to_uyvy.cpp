#include "lib/format_conversion/line/rgb_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/alpha_test.h"
#include "lib/format_conversion/line/bodies/rgb_sums.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

using detail::bt709;
using detail::rgb;
using detail::weights_of_rgb;

namespace {

// 16 and 128 in the scales of the sums.
constexpr int black_y = 16 * 128, black_c = 128 * 256;
constexpr lane<unsigned short> c_Y{black_y}, c_C{black_c}, luma_mask{0xFF00};

// Eight pixels a lane: the sums with their offsets are in 0..65535 (luma: in 128ths, below 32768), so that neither has
// to be clamped and the bytes can be taken out of them.
template <class V>
QUILLO_INLINE inline V uyvy_of(V chroma_sums, V luma_sums)
{
    auto const chroma = add_16(chroma_sums, V::repeat(c_C)), luma = add_16(luma_sums, V::repeat(c_Y));
    return shift_right_u16(chroma, by<8>) | (add_16(luma, luma) & V::repeat(luma_mask));
}

template <bool order, class V>
QUILLO_INLINE inline V uyvy_of(vec_pair<V> pixels, V k_C, V k_Y)
{
    return in_order(uyvy_of(dot_16(pixels, k_C), dot_16(pixels, k_Y)));
}

template <processor p, bool matrix, bool order>
QUILLO_INLINE inline void convert_pair(unsigned char const* src, unsigned char* dst)
{
    constexpr auto weights = detail::from_rgb<matrix>;
    dst[0] = static_cast<unsigned char>((weighted_sum<p, order>(weights.cb, src) + black_c) >> 8);
    dst[1] = static_cast<unsigned char>((weighted_sum<p, order>(weights.y, src) + black_y) >> 7);
    dst[2] = static_cast<unsigned char>((weighted_sum<p, order>(weights.cr, src + 4) + black_c) >> 8);
    dst[3] = static_cast<unsigned char>((weighted_sum<p, order>(weights.y, src + 4) + black_y) >> 7);
}

template <bool order>
struct constants
{
    lane<signed char> k_Y, k_C;

    constexpr explicit constants(weights_of_rgb const& weights)
        : k_Y(in_source_order<order>(weights.y)), k_C(in_source_order<order>(weights.cb, weights.cr))
    {
    }
};

} // namespace

template <processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order>
void rgb_to_uyvy::run(unsigned char const* src, unsigned char* dst, int width, access how)
{
    static constexpr constants<order> k(detail::from_rgb<matrix>);

    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const pixels = V::template load_two<src_aligned>(src + at * 4);
        uyvy_of<order>(pixels, V::repeat(k.k_C), V::repeat(k.k_Y)).template store<dst_aligned, streaming>(dst + at * 2);
    });
    for (; i + 2 <= width; i += 2)
        convert_pair<p, matrix, order>(src + i * 4, dst + i * 2);
}

template <processor p, bool src_aligned, bool dst_aligned, bool matrix, bool order, bool test_alpha>
bool rgb_to_uyvy_a::run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how)
{
    static constexpr constants<order> k(detail::from_rgb<matrix>);

    alpha_test<p> alphas;
    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const pixels = V::template load_two<src_aligned>(src + at * 4);
        uyvy_of<order>(pixels, V::repeat(k.k_C), V::repeat(k.k_Y)).template store<dst_aligned, streaming>(dst + at * 2);
        V::template store_fourth_bytes<streaming>(alpha + at, pixels);
        if constexpr (test_alpha)
            alphas.add(pixels.first & pixels.second);
    });
    for (; i + 2 <= width; i += 2) {
        convert_pair<p, matrix, order>(src + i * 4, dst + i * 2);
        alpha[i] = src[i * 4 + 3];
        alpha[i + 1] = src[i * 4 + 7];
        alphas.add_alpha(alpha[i] & alpha[i + 1]);
    }
    // Nothing looked at is not opaque, and a last odd pixel is not looked at.
    return i > 0 && alphas.opaque();
}

template <processor p, bool src_aligned, bool dst_aligned, bool order>
void rgb_over_black_to_uyvy::run(unsigned char const* src, unsigned char* dst, int width, access how)
{
    static constexpr constants<order> k(detail::from_rgb_premultiplied);
    // The alphas of pixels 0 and 1 of a group of four, for each of their bytes, and for those of pixels 2 and 3 too.
    static constexpr lane<signed char> alphas_of_two{3, -1, 3, -1, 3, -1, 3, -1, 7, -1, 7, -1, 7, -1, 7, -1};

    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const to_alphas = V::repeat(alphas_of_two);
        auto const premultiplied = [to_alphas](V four) {
            auto const alphas = shuffle(four, to_alphas);
            return pack_u8(mul_high_u16(zip_low_8(V::zero(), four), alphas),
                           mul_high_u16(zip_high_8(V::zero(), four), alphas));
        };
        auto const [first, second] = V::template load_two<src_aligned>(src + at * 4);
        vec_pair<V> const pixels{premultiplied(first), premultiplied(second)};
        uyvy_of<order>(pixels, V::repeat(k.k_C), V::repeat(k.k_Y)).template store<dst_aligned, streaming>(dst + at * 2);
    });

    static constexpr auto weights = detail::from_rgb_premultiplied;
    auto const luma = [](unsigned char const* pixel) {
        return saturate(((weighted_sum<p, order>(weights.y, pixel) * pixel[3] >> 8) + black_y) >> 7);
    };
    auto const chroma = [](unsigned char const* pixel) {
        return saturate(((weighted_sum<p, order>(weights.cb, pixel) * pixel[3] >> 8) + black_c) >> 8);
    };
    for (; i + 2 <= width; i += 2) {
        unsigned char const* const pair = src + i * 4;
        dst[i * 2] = chroma(pair);
        dst[i * 2 + 1] = luma(pair);
        // V takes the Cb weights here, as U does.
        dst[i * 2 + 2] = chroma(pair + 4);
        dst[i * 2 + 3] = luma(pair + 4);
    }
}

template <processor p, bool, bool dst_aligned>
void bgr_to_uyvy::run(unsigned char const* src, unsigned char* dst, int width, access how)
{
    // Green stands in the gap too and takes part of its weight there, so that the parts of luma fit signed bytes.
    constexpr auto weights = detail::from_rgb_fine;
    constexpr int green = 80;
    static constexpr lane<signed char> k_bgr_bgrX{0, 1, 2, 1, 3, 4, 5, 4, 6, 7, 8, 7, 9, 10, 11, 10};
    static constexpr lane<signed char> k_y{weights.y.b, green, weights.y.r, weights.y.g - green};
    static constexpr auto k_uv(in_source_order<bgra_order>(weights.cb, weights.cr));
    static constexpr lane<unsigned short> k_16{16 * 256};

    // Sources advance by 24 bytes and are never aligned; the loads reach a few pixels further than the block.
    constexpr int reach = 6;
    auto i = blocks<p, 8>(width - reach, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 24 * V::lanes>(src + at * 3, how.ahead);
        auto const [first, second] = V::load_twelves(src + at * 3);
        auto const spread = V::repeat(k_bgr_bgrX);
        vec_pair<V> const pixels{shuffle(first, spread), shuffle(second, spread)};
        auto const chroma = add_16(dot_16(pixels, V::repeat(k_uv)), V::repeat(c_C));
        auto const luma = add_16(dot_u16(pixels, V::repeat(k_y)), V::repeat(k_16));
        in_order(shift_right_u16(chroma, by<8>) | (luma & V::repeat(luma_mask)))
            .template store<dst_aligned, streaming>(dst + at * 2);
    });
    // The whole pair, also where only half of it is the run's.
    for (; i < width; i += 2) {
        unsigned char const* const even = src + i * 3;
        unsigned char const* const odd = even + 3;
        auto const byte = [](int sum) { return static_cast<unsigned char>(sum >> 8); };
        dst[i * 2] = byte(weighted_sum<p, bgra_order>(weights.cb, even) + black_c);
        dst[i * 2 + 1] = byte(weighted_sum<p, bgra_order>(weights.y, even) + 16 * 256);
        dst[i * 2 + 2] = byte(weighted_sum<p, bgra_order>(weights.cr, odd) + black_c);
        dst[i * 2 + 3] = byte(weighted_sum<p, bgra_order>(weights.y, odd) + 16 * 256);
    }
}

// clang-format off
#define BODY(...) template void rgb_to_uyvy::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(2, BODY)
#undef BODY
#define BODY(...) template bool rgb_to_uyvy_a::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(3, BODY)
#undef BODY
#define BODY(...) template void rgb_over_black_to_uyvy::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
#define BODY(...) template void bgr_to_uyvy::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
