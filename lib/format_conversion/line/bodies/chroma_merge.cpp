#include "lib/format_conversion/line/chroma_merge.h"

#include "lib/format_conversion/line/instances.h"
#include "lib/format_conversion/line/vec.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// store.operator()<V, streaming>(first byte, sixteen bytes a lane, the next sixteen) for the interleaved line.
template <processor p, bool src_aligned, class Store>
QUILLO_INLINE inline std::ptrdiff_t merge(unsigned char const* u, unsigned char const* v, int count, access how,
                                          Store const& store)
{
    return blocks<p, 32>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 16 * V::lanes>(u + at / 2 + how.ahead);
        prefetch<p, 16 * V::lanes>(v + at / 2 + how.ahead);
        auto const cb = V::template load<src_aligned>(u + at / 2), cr = V::template load<src_aligned>(v + at / 2);
        store.template operator()<V, streaming>(at, zip_low_8(cb, cr), zip_high_8(cb, cr));
    });
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned>
void merge_chroma::run(unsigned char const* u, unsigned char const* v, unsigned char* uv, int count, access how)
{
    auto i =
        merge<p, src_aligned>(u, v, count, how, [&]<class V, bool streaming>(std::ptrdiff_t at, V first, V second) {
            V::template store_pairs<dst_aligned, streaming>(uv + at, first, second);
        });
    for (; i + 2 <= count; i += 2) {
        uv[i] = u[i / 2];
        uv[i + 1] = v[i / 2];
    }
}

template <processor p, bool src_aligned, bool dst_aligned>
void merge_chroma_twice::run(unsigned char const* u, unsigned char const* v, unsigned char* uv, unsigned char* uv_below,
                             int count, access how)
{
    auto i =
        merge<p, src_aligned>(u, v, count, how, [&]<class V, bool streaming>(std::ptrdiff_t at, V first, V second) {
            V::template store_pairs<dst_aligned, streaming>(uv + at, first, second);
            V::template store_pairs<dst_aligned, streaming>(uv_below + at, first, second);
        });
    for (; i + 2 <= count; i += 2) {
        uv[i] = uv_below[i] = u[i / 2];
        uv[i + 1] = uv_below[i + 1] = v[i / 2];
    }
}

template <processor p, bool src_aligned, bool dst_aligned>
void copy_chroma_twice::run(unsigned char const* uv, unsigned char* to, unsigned char* below, int count, access how)
{
    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 16 * V::lanes>(uv + at + how.ahead);
        auto const line = V::template load<src_aligned>(uv + at);
        line.template store<dst_aligned, streaming>(to + at);
        line.template store<dst_aligned, streaming>(below + at);
    });
    for (; i < count; ++i)
        to[i] = below[i] = uv[i];
}

// clang-format off
#define BODY(...) \
    template void merge_chroma::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access); \
    template void merge_chroma_twice::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, unsigned char*, int, access); \
    template void copy_chroma_twice::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
