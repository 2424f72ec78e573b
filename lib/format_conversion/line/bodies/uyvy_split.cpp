#include "lib/format_conversion/line/uyvy_split.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

template <bool aligned, class V>
QUILLO_INLINE inline vec_pair<V> load_two(unsigned char const* from)
{
    return {V::template load<aligned>(from), V::template load<aligned>(from + 16 * V::lanes)};
}

template <class V>
QUILLO_INLINE inline V low_bytes(vec_pair<V> words)
{
    static constexpr lane<unsigned short> low_byte{255};
    return pack_all_u8(words.first & V::repeat(low_byte), words.second & V::repeat(low_byte));
}

template <class V>
QUILLO_INLINE inline V high_bytes(vec_pair<V> words)
{
    return pack_all_u8(shift_right_u16(words.first, by<8>), shift_right_u16(words.second, by<8>));
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned>
void split_y_uv::run(unsigned char const* src, unsigned char* y, unsigned char* uv, int count, access how)
{
    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 2, how.ahead);
        auto const src_pixels = load_two<src_aligned, V>(src + at * 2);
        high_bytes(src_pixels).template store<dst_aligned, streaming>(y + at);
        low_bytes(src_pixels).template store<dst_aligned, streaming>(uv + at);
    });
    for (; i < count; ++i) {
        y[i] = src[i * 2 + 1];
        uv[i] = src[i * 2];
    }
}

template <processor p, bool src_aligned, bool dst_aligned>
void split_y_u_v::run(unsigned char const* src, unsigned char* y, unsigned char* u, unsigned char* v, int count,
                      access how)
{
    auto i = blocks<p, 32>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        V chroma[2];
        for (int half = 0; half < 2; ++half) {
            auto const from = at + half * 16 * V::lanes;
            prefetch<p, 32 * V::lanes>(src + from * 2, how.ahead);
            auto const src_pixels = load_two<src_aligned, V>(src + from * 2);
            high_bytes(src_pixels).template store<dst_aligned, streaming>(y + from);
            chroma[half] = low_bytes(src_pixels);
        }
        low_bytes<V>({chroma[0], chroma[1]}).template store<dst_aligned, streaming>(u + at / 2);
        high_bytes<V>({chroma[0], chroma[1]}).template store<dst_aligned, streaming>(v + at / 2);
    });
    for (; i < count; ++i) {
        y[i] = src[i * 2 + 1];
        if (i % 2 == 1) {
            u[i / 2] = src[i * 2 - 2];
            v[i / 2] = src[i * 2];
        }
    }
}

// clang-format off
#define BODY(...) \
    template void split_y_uv::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access); \
    template void split_y_u_v::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
