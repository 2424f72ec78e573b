#include "lib/format_conversion/line/fill.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void fill_black::run(unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned char> black_col{128, 16, 128, 16};

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const black = V::repeat(black_col);
        black.template store<dst_aligned, streaming>(dst + at * 2);
        black.template store<dst_aligned, streaming>(dst + at * 2 + 16 * V::lanes);
    });
    // Four bytes a pixel: leave room for them.
    for (unsigned char* to = dst + i * 2; i < count; ++i, to += 4)
        for (int n = 0; n < 4; ++n)
            to[n] = black_col.value[n];
}

template <processor p, bool src_aligned, bool dst_aligned>
void fill_bytes::run(unsigned char* dst, unsigned char value, unsigned char rest, int count, access how)
{
    auto i = blocks<p, 32>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const fill = V::of_bytes(value);
        fill.template store<dst_aligned, streaming>(dst + at);
        fill.template store<dst_aligned, streaming>(dst + at + 16 * V::lanes);
    });
    for (; i < count; ++i)
        dst[i] = rest;
}

// clang-format off
#define BODY(...) \
    template void fill_black::run<here, __VA_ARGS__>(unsigned char*, int, access); \
    template void fill_bytes::run<here, __VA_ARGS__>(unsigned char*, unsigned char, unsigned char, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
