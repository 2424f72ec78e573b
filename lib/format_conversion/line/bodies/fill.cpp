#include "lib/format_conversion/line/fill.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

// The whole blocks of 32 bytes of a run, eight bytes again and again, the lowest first. Returns how many bytes that
// was.
template <processor p, bool dst_aligned>
QUILLO_INLINE inline std::ptrdiff_t fill_blocks(unsigned char* dst, std::ptrdiff_t bytes, unsigned long long pattern,
                                                access how)
{
    // In the nearest caches vectors are faster.
    if (how.ahead != 0 && by_string<p>(bytes, how)) {
        note_ran<p>();
        fill_string(dst, pattern, bytes / 32 * 4);
        return bytes / 32 * 32;
    }
    return vectors<p, 32>(bytes, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        V::of_eight(pattern).template store<dst_aligned, streaming>(dst + at);
    });
}

} // namespace

template <processor p, bool src_aligned, bool dst_aligned>
void fill_black::run(unsigned char* dst, int count, access how)
{
    static constexpr unsigned black_col = 0x10801080;
    constexpr unsigned long long two_pairs = black_col | static_cast<unsigned long long>(black_col) << 32;

    auto const done = fill_blocks<p, dst_aligned>(dst, count * std::ptrdiff_t{2}, two_pairs, how);
    // Four bytes a pixel: leave room for them.
    unsigned char* to = dst + done;
    for (auto i = done / 2; i < count; ++i, to += 4)
        __builtin_memcpy(to, &black_col, 4);
}

template <processor p, bool src_aligned, bool dst_aligned>
void fill_bytes::run(unsigned char* dst, unsigned char value, unsigned char rest, int count, access how)
{
    for (auto i = fill_blocks<p, dst_aligned>(dst, count, value * 0x0101010101010101ull, how); i < count; ++i)
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
