#include "lib/format_conversion/line/uyvy_to_444.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// The two vectors of four pixels a lane that eight UYVY pixels become, their fourth bytes 0.
template <bool order, class V>
QUILLO_INLINE inline vec_pair<V> without_alpha(V uyvy)
{
    using bytes = lane<unsigned char>;
    static constexpr bytes ycbcr_l{1, 0, 2, 128, 3, 0, 2, 128, 5, 4, 6, 128, 7, 4, 6, 128};
    static constexpr bytes ycbcr_h{9, 8, 10, 128, 11, 8, 10, 128, 13, 12, 14, 128, 15, 12, 14, 128};
    static constexpr bytes reorder_uyvy_l{2, 0, 1, 128, 2, 0, 3, 128, 6, 4, 5, 128, 6, 4, 7, 128};
    static constexpr bytes reorder_uyvy_h{10, 8, 9, 128, 10, 8, 11, 128, 14, 12, 13, 128, 14, 12, 15, 128};
    return {shuffle(uyvy, V::repeat(order == crcbya_order ? reorder_uyvy_l : ycbcr_l)),
            shuffle(uyvy, V::repeat(order == crcbya_order ? reorder_uyvy_h : ycbcr_h))};
}

// The pixels of the run behind the last whole block.
template <bool order, class Alpha>
void rest(std::ptrdiff_t i, unsigned char const* src, Alpha alpha_of, unsigned char* dst, int count)
{
    for (; i < count; ++i) {
        unsigned char const* const pair = src + i / 2 * 4;
        unsigned char* const to = dst + i * 4;
        unsigned char const y = src[i * 2 + 1];
        to[0] = order == crcbya_order ? pair[2] : y;
        to[1] = pair[0];
        to[2] = order == crcbya_order ? y : pair[2];
        to[3] = alpha_of(i);
    }
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned>
void uyvy_to_ycbcrx::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned char> opaque{0, 0, 0, 255};

    auto const done = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + at * 2, how.ahead);
        auto const [low, high] = without_alpha<ycbcra_order>(V::template load<src_aligned>(src + at * 2));
        V::template store_pairs<dst_aligned, streaming>(dst + at * 4, low | V::repeat(opaque),
                                                        high | V::repeat(opaque));
    });
    rest<ycbcra_order>(
        done, src, [](std::ptrdiff_t) { return static_cast<unsigned char>(255); }, dst, count);
}

template <processor p, bool src_aligned, bool dst_aligned, bool order>
void uyvy_a_to_444::run(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, access how)
{
    using bytes = lane<unsigned char>;
    static constexpr bytes reorder_alpha_l{128, 128, 128, 0, 128, 128, 128, 1, 128, 128, 128, 2, 128, 128, 128, 3};
    static constexpr bytes reorder_alpha_h{128, 128, 128, 4, 128, 128, 128, 5, 128, 128, 128, 6, 128, 128, 128, 7};

    auto const done = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 16 * V::lanes>(src + at * 2, how.ahead);
        prefetch<p, 8 * V::lanes>(alpha + at, how.ahead / 2);
        auto const alphas = V::load_low_halves(alpha + at);
        auto const [low, high] = without_alpha<order>(V::template load<src_aligned>(src + at * 2));
        V::template store_pairs<dst_aligned, streaming>(dst + at * 4, low | shuffle(alphas, V::repeat(reorder_alpha_l)),
                                                        high | shuffle(alphas, V::repeat(reorder_alpha_h)));
    });
    rest<order>(
        done, src, [=](std::ptrdiff_t i) { return alpha[i]; }, dst, count);
}

// clang-format off
#define BODY(...) template void uyvy_to_ycbcrx::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
#define BODY(...) template void uyvy_a_to_444::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
