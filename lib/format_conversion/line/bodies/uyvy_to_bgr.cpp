#include "lib/format_conversion/line/uyvy_to_bgr.h"

#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

using detail::weights_256;

// (y Y + u Cb + v Cr + constant) >> 8 needs 18 bits on its way, so it is taken apart into whole levels and a rest that
// is shifted; the rest's constant keeps it inside 16 bits.
struct split_weights
{
    weights_256 levels, rest;
};

constexpr int extreme(weights_256 w, bool highest)
{
    int sum = w.constant;
    for (int const weight : {w.y, w.u, w.v})
        if ((weight > 0) == highest)
            sum += weight * 255;
    return sum;
}

constexpr split_weights split(weights_256 w)
{
    auto const whole = [](int weight) { return (weight + 128) >> 8; };
    weights_256 levels{1, whole(w.u), whole(w.v), 0};
    weights_256 rest{w.y - 256, w.u - 256 * levels.u, w.v - 256 * levels.v, 0};
    int const middle = (extreme(rest, false) + extreme(rest, true)) / 2;
    levels.constant = (w.constant + middle) >> 8;
    rest.constant = w.constant - 256 * levels.constant;
    return {levels, rest};
}

constexpr bool fits_16_bits(weights_256 w) { return extreme(w, false) >= -32768 && extreme(w, true) <= 32767; }

// Weights and constants of one channel, and what they make of sixteen pixels a lane.
template <weights_256 w>
struct channel
{
    static constexpr split_weights part = split(w);
    static_assert(fits_16_bits(part.rest));
    static constexpr lane<signed char> u_v_levels{part.levels.u, part.levels.v};
    static constexpr lane<signed char> u_v_rest{part.rest.u, part.rest.v};
    static constexpr lane<short> y_rest{part.rest.y};
    static constexpr lane<short> constant_levels{part.levels.constant};
    static constexpr lane<short> constant_rest{part.rest.constant};

    // Even pixels, then odd ones. Chroma holds the Cb, Cr of the eight pairs.
    template <class V>
    QUILLO_INLINE static V of(V even_y, V odd_y, V chroma)
    {
        auto const levels = add_16(mul_add_u8(chroma, V::repeat(u_v_levels)), V::repeat(constant_levels));
        auto const rest = add_16(mul_add_u8(chroma, V::repeat(u_v_rest)), V::repeat(constant_rest));
        auto const sum = [&](V y) {
            auto const shifted = shift_right_16(add_16(mul_low_16(y, V::repeat(y_rest)), rest), by<8>);
            return add_16(add_16(y, levels), shifted);
        };
        return pack_u8(sum(even_y), sum(odd_y));
    }

    static unsigned char of(int y, int u, int v) { return saturate((w.y * y + w.u * u + w.v * v + w.constant) >> 8); }
};

// The bytes of component `which` (0 B, 1 G, 2 R), even pixels then odd ones, that go into vector `part` of the three
// that hold sixteen pixels; zeros between them.
constexpr lane<unsigned char> places(int which, int part)
{
    lane<unsigned char> from{128};
    for (int i = 0; i < 64; ++i) {
        int const to = part * 16 + i % 16, pixel = to / 3;
        if (to % 3 == which)
            from.value[i] = static_cast<unsigned char>(pixel % 2 * 8 + pixel / 2);
    }
    return from;
}

template <int part, class V>
QUILLO_INLINE inline V interleave(V b, V g, V r)
{
    static constexpr auto from_b = places(0, part), from_g = places(1, part), from_r = places(2, part);
    return shuffle(b, V::repeat(from_b)) | shuffle(g, V::repeat(from_g)) | shuffle(r, V::repeat(from_r));
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned, bool matrix>
void uyvy_to_three_bytes::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    using b_scale = channel<detail::to_rgb_256<matrix>.b_scale>;
    using g_scale = channel<detail::to_rgb_256<matrix>.g_scale>;
    using r_scale = channel<detail::to_rgb_256<matrix>.r_scale>;
    static constexpr lane<unsigned char> chroma_then_luma{0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};
    static constexpr lane<unsigned short> low_byte{255};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 32 * V::lanes>(src + at * 2, how.ahead);
        auto const [first, second] = V::template load_pairs<src_aligned>(src + at * 2);
        auto const low = shuffle(first, V::repeat(chroma_then_luma));
        auto const high = shuffle(second, V::repeat(chroma_then_luma));
        auto const chroma = zip_low_64(low, high), y = zip_high_64(low, high);
        auto const even_y = y & V::repeat(low_byte), odd_y = shift_right_u16(y, by<8>);
        auto const b = b_scale::of(even_y, odd_y, chroma);
        auto const g = g_scale::of(even_y, odd_y, chroma);
        auto const r = r_scale::of(even_y, odd_y, chroma);
        V::template store_triples<dst_aligned, streaming>(dst + at * 3, interleave<0>(b, g, r), interleave<1>(b, g, r),
                                                          interleave<2>(b, g, r));
    });

    for (; i < count; i += 2)
        for (auto at = i; at < i + 2; ++at) {
            int const y = src[at * 2 + 1], u = src[i * 2], v = src[i * 2 + 2];
            dst[at * 3] = b_scale::of(y, u, v);
            dst[at * 3 + 1] = g_scale::of(y, u, v);
            dst[at * 3 + 2] = r_scale::of(y, u, v);
        }
}

// clang-format off
#define BODY(...) template void uyvy_to_three_bytes::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
