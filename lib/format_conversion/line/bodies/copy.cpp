#include "lib/format_conversion/line/copy.h"

#include "lib/format_conversion/line/instances.h"
#include "lib/format_conversion/line/vec.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void copy_bytes::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    auto const done = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t i) {
        prefetch<p>(src + i + how.ahead);
        V::template load<src_aligned>(src + i).template store<dst_aligned, streaming>(dst + i);
    });
    for (std::ptrdiff_t i = done; i < count; ++i)
        dst[i] = src[i];
}

template <processor p, bool src_aligned, bool dst_aligned>
bool copy_testing_alpha::run(unsigned char const* src, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned> alpha_mask_128{0xFF000000u};

    running_and<p> every_pixel;
    auto const done = blocks<p, 4>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t i) {
        prefetch<p>(src + i * 4 + how.ahead);
        auto const pixels = V::template load<src_aligned>(src + i * 4);
        pixels.template store<dst_aligned, streaming>(dst + i * 4);
        every_pixel.add(pixels);
    });

    using one = vec<p, 1>;
    auto const alphas = every_pixel.result() & one::repeat(alpha_mask_128);
    bool opaque = (alphas.mask_of_255() & 0x8888) == 0x8888;
    for (std::ptrdiff_t i = done * 4; i < count * std::ptrdiff_t{4}; i += 4) {
        for (int byte = 0; byte < 4; ++byte)
            dst[i + byte] = src[i + byte];
        opaque &= src[i + 3] == 255;
    }
    return opaque;
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
