#include "lib/format_conversion/line/copy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/alpha_test.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void copy_bytes::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    if (by_string<p>(count, how)) {
        note_ran<p>();
        return move_string(src, dst, count);
    }
    auto const done = vectors<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t i) {
        prefetch<p, 16 * V::lanes>(src + i, how.ahead);
        V::template load<src_aligned>(src + i).template store<dst_aligned, streaming>(dst + i);
    });
    for (std::ptrdiff_t i = done; i < count; ++i)
        dst[i] = src[i];
}

template <processor p, bool src_aligned, bool dst_aligned>
bool copy_testing_alpha::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    alpha_test<p> alphas;
    std::ptrdiff_t const bytes = count * std::ptrdiff_t{4};

    // In the nearest caches vectors are faster.
    if (how.ahead != 0 && by_string<p>(bytes, how)) {
        // Pieces that are still in the first cache when they are moved.
        constexpr std::ptrdiff_t piece = 8192;
        for (std::ptrdiff_t at = 0; at < bytes; at += piece) {
            std::ptrdiff_t const length = bytes - at < piece ? bytes - at : piece;
            // Eight vectors are put together before they wait for those that came before.
            auto i = blocks<p, 128>(length, how, [&]<class V, bool>(std::ptrdiff_t n) {
                prefetch<p, 128 * V::lanes>(src + at + n, how.ahead);
                auto all = V::ones();
                for (int vector = 0; vector < 8; ++vector)
                    all = all & V::template load<false>(src + at + n + 16 * V::lanes * vector);
                alphas.add(all);
            });
            for (; i < length; i += 4)
                alphas.add_alpha(src[at + i + 3]);
            move_string(src + at, dst + at, length);
        }
        return alphas.opaque();
    }

    auto i = vectors<p, 16>(bytes, how, [&]<class V, bool streaming>(std::ptrdiff_t n) {
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 16 * V::lanes>(src + n, how.ahead);
        auto const pixels = V::template load<src_aligned>(src + n);
        pixels.template store<dst_aligned, streaming>(dst + n);
        alphas.add(pixels);
    });
    for (; i < bytes; i += 4) {
        for (int byte = 0; byte < 4; ++byte)
            dst[i + byte] = src[i + byte];
        alphas.add_alpha(src[i + 3]);
    }
    return alphas.opaque();
}

// clang-format off
#define BODY(...) template void copy_bytes::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
#define BODY(...) template bool copy_testing_alpha::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
