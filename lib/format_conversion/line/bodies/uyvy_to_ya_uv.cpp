#include "lib/format_conversion/line/uyvy_to_ya_uv.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/expanded_luma.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// Alphas, sixteen a lane as two vectors with each in the upper byte of its 16 bits, and one by one.
template <processor p, bool aligned, bool expand>
struct key_image
{
    unsigned char const* key;

    template <class V>
    QUILLO_INLINE vec_pair<V> words(std::ptrdiff_t at, std::ptrdiff_t ahead) const
    {
        static constexpr lane<unsigned short> high_byte{0xFF00};
        prefetch<p, 32 * V::lanes>(key + at * 2, ahead);
        auto const [first, second] = V::template load_pairs<aligned>(key + at * 2);
        if constexpr (expand)
            return {shift_left_16(expanded_luma(first), by<8>), shift_left_16(expanded_luma(second), by<8>)};
        else
            return {first & V::repeat(high_byte), second & V::repeat(high_byte)};
    }
    unsigned char operator[](std::ptrdiff_t i) const
    {
        int const y = key[i * 2 + 1];
        return expand ? saturate(expanded_luma_256<p>(y) >> 8) : static_cast<unsigned char>(y);
    }
};

template <processor p, bool aligned>
struct alpha_plane
{
    unsigned char const* alpha;

    template <class V>
    QUILLO_INLINE vec_pair<V> words(std::ptrdiff_t at, std::ptrdiff_t ahead) const
    {
        prefetch<p, 16 * V::lanes>(alpha + at, ahead / 2);
        auto const alphas = V::template load<aligned>(alpha + at);
        return {zip_low_8(V::zero(), alphas), zip_high_8(V::zero(), alphas)};
    }
    unsigned char operator[](std::ptrdiff_t i) const { return alpha[i]; }
};

template <processor p, bool src_aligned, bool dst_aligned, class Alphas>
QUILLO_INLINE inline void join(unsigned char const* src, Alphas alphas, unsigned char* ya, unsigned char* uv, int count,
                               access how)
{
    static constexpr lane<unsigned short> low_byte{255};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        std::ptrdiff_t const ahead = streaming ? how.ahead : 0;
        prefetch<p, 32 * V::lanes>(src + at * 2, ahead);
        auto const [first, second] = V::template load_pairs<src_aligned>(src + at * 2);
        auto const [first_a, second_a] = alphas.template words<V>(at, ahead);
        V::template store_pairs<dst_aligned, streaming>(ya + at * 2, shift_right_u16(first, by<8>) | first_a,
                                                        shift_right_u16(second, by<8>) | second_a);
        pack_u8(first & V::repeat(low_byte), second & V::repeat(low_byte))
            .template store<dst_aligned, streaming>(uv + at);
    });
    for (; i < count; ++i) {
        ya[i * 2] = src[i * 2 + 1];
        ya[i * 2 + 1] = alphas[i];
        uv[i] = src[i * 2];
    }
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned, bool expand>
void join_key::run(unsigned char const* src, unsigned char const* key, unsigned char* ya, unsigned char* uv, int count,
                   access how)
{
    join<p, src_aligned, dst_aligned>(src, key_image<p, src_aligned, expand>{key}, ya, uv, count, how);
}

template <processor p, bool src_aligned, bool dst_aligned>
void join_alpha::run(unsigned char const* src, unsigned char const* alpha, unsigned char* ya, unsigned char* uv,
                     int count, access how)
{
    join<p, src_aligned, dst_aligned>(src, alpha_plane<p, src_aligned>{alpha}, ya, uv, count, how);
}

// clang-format off
#define BODY(...) template void join_key::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
#define BODY(...) template void join_alpha::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
