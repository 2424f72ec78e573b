#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion_lines.h"

#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/rgb_sums.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// What blocks and tails have seen of alpha. A block's vector holds its own alphas in bytes 0..7; what bytes 8..15 have
// gathered must not be 255 then. Without a block they are.
template <processor p>
struct seen_alphas
{
    running_and<p> blocks;
    int tails = 255;

    QUILLO_INLINE int word() const { return blocks.result().mask_of_255() | (tails == 255 ? 0x10000 : 0); }
};

// Bytes 0..3 of both, then bytes 4..7 of both, lane by lane.
template <class V>
QUILLO_INLINE inline V gathered(V low, V high, V order)
{
    return zip_low_32(shuffle(low, order), shuffle(high, order));
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned>
int split_bgra::run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how)
{
    static constexpr auto weights = detail::from_rgb_fine;
    // Green stands in alpha's place too and takes part of its weight there, so that the parts of luma fit signed bytes.
    constexpr int green = 80;
    static constexpr lane<unsigned char> k_bgrg{0, 1, 2, 1, 4, 5, 6, 5, 8, 9, 10, 9, 12, 13, 14, 13};
    static constexpr lane<signed char> k_y{weights.y.b, green, weights.y.r, weights.y.g - green};
    static constexpr auto k_uv(in_source_order<bgra_order>(weights.cb, weights.cr));
    static constexpr lane<unsigned short> k_const_uv{128 * 256}, k_const_y{16 * 256}, k_high_bytes{0xFF00};
    // The last eight bytes of a block are blue of its pixels 0 and 4, four times each.
    static constexpr lane<unsigned char> k_shuffle{3, 7, 11, 15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

    seen_alphas<p> seen;
    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const [low, high] = V::template load_pairs<src_aligned>(src + at * 4);
        auto const block = gathered(low, high, V::repeat(k_shuffle));
        block.template store_low_halves<streaming>(alpha + at);
        seen.blocks.add(block);

        auto const order = V::repeat(k_bgrg);
        vec_pair<V> const pixels{shuffle(low, order), shuffle(high, order)};
        auto const uv = add_16(dot_16(vec_pair<V>{low, high}, V::repeat(k_uv)), V::repeat(k_const_uv));
        auto const y = add_16(dot_u16(pixels, V::repeat(k_y)), V::repeat(k_const_y));
        (shift_right_u16(uv, by<8>) | (y & V::repeat(k_high_bytes)))
            .template store<dst_aligned, streaming>(dst + at * 2);
    });
    for (; i < width; i += 2) {
        unsigned char const* const even = src + i * 4;
        unsigned char const* const odd = even + 4;
        auto const byte = [](int sum, int offset) { return static_cast<unsigned char>((sum >> 8) + offset); };
        alpha[i] = even[3];
        alpha[i + 1] = odd[3];
        seen.tails &= even[3] & odd[3];
        dst[i * 2] = byte(weighted_sum<p, bgra_order>(weights.cb, even), 128);
        dst[i * 2 + 1] = byte(weighted_sum<p, bgra_order>(weights.y, even), 16);
        dst[i * 2 + 2] = byte(weighted_sum<p, bgra_order>(weights.cr, odd), 128);
        dst[i * 2 + 3] = byte(weighted_sum<p, bgra_order>(weights.y, odd), 16);
    }
    return seen.word();
}

template <processor p, bool src_aligned, bool dst_aligned>
int split_yuya::run(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int width, access how)
{
    static constexpr lane<unsigned char> reorder_uyvy{1, 2, 0, 6, 9, 10, 8, 14, 255, 255, 255, 255, 255, 255, 255, 255};
    static constexpr lane<unsigned char> reorder_alpha{3,   7,   11,  15,  255, 255, 255, 255,
                                                       255, 255, 255, 255, 255, 255, 255, 255};

    seen_alphas<p> seen;
    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        auto const [low, high] = V::template load_pairs<src_aligned>(src + at * 4);
        auto const order = V::repeat(reorder_uyvy);
        zip_low_64(shuffle(low, order), shuffle(high, order)).template store<dst_aligned, streaming>(dst + at * 2);
        auto const block = gathered(low, high, V::repeat(reorder_alpha));
        block.template store_low_halves<streaming>(alpha + at);
        seen.blocks.add(block);
    });
    for (; i < width; i += 2) {
        unsigned char const* const even = src + i * 4;
        unsigned char const* const odd = even + 4;
        dst[i * 2] = even[1];
        dst[i * 2 + 1] = even[2];
        dst[i * 2 + 2] = even[0];
        dst[i * 2 + 3] = odd[2];
        alpha[i] = even[3];
        alpha[i + 1] = odd[3];
        seen.tails &= even[3] & odd[3];
    }
    return seen.word();
}

template <processor p, bool src_aligned, bool dst_aligned>
void blend_uyvy::run(unsigned char const* fg, unsigned char const* alpha, unsigned char* dst, int width, access how)
{
    static constexpr lane<unsigned short> k_256{256};

    // The target's lines have been read: to stream them would only throw them out of the caches.
    how.streaming = false;
    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 16 * V::lanes>(fg + at * 2, how.ahead);
        prefetch<p, 8 * V::lanes>(alpha + at, how.ahead / 2);
        prefetch<p, 16 * V::lanes>(dst + at * 2, how.ahead);
        auto const front = V::template load<src_aligned>(fg + at * 2);
        auto const back = V::template load<dst_aligned>(dst + at * 2);
        auto const eight = V::load_low_halves(alpha + at), a = zip_low_8(eight, eight);
        auto const blend = [](V front_256, V back_256, V a_16) {
            auto const w = add_16(a_16, shift_right_u16(a_16, by<7>)); // 0..127, 129..256
            auto const rest = sub_16(V::repeat(k_256), w);
            return add_16(mul_high_u16(front_256, w), mul_high_u16(back_256, rest));
        };
        auto const zero = V::zero();
        pack_u8(blend(zip_low_8(zero, front), zip_low_8(zero, back), zip_low_8(a, zero)),
                blend(zip_high_8(zero, front), zip_high_8(zero, back), zip_high_8(a, zero)))
            .template store<dst_aligned, streaming>(dst + at * 2);
    });
    for (; i < width; ++i) {
        // In bytes: at alpha 0 and 255 both weights are 0.
        auto const w = static_cast<unsigned char>(alpha[i] + (alpha[i] >> 7));
        auto const rest = static_cast<unsigned char>(256 - w);
        for (auto byte = i * 2; byte < i * 2 + 2; ++byte)
            dst[byte] = static_cast<unsigned char>((fg[byte] * w + dst[byte] * rest) >> 8);
    }
}

// clang-format off
#define BODY(...) \
    template int split_bgra::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access); \
    template int split_yuya::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access); \
    template void blend_uyvy::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
