#include "lib/format_conversion/line/uyvy_to_r_g_b.h"

#include "lib/format_conversion/line/bodies/rgb_64.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned, bool matrix>
void uyvy_to_planes::run(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count,
                         access how)
{
    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 32 * V::lanes>(src + at * 2, how.ahead);
        auto const [first, second] = V::template load_pairs<src_aligned>(src + at * 2);
        auto const low = rgb_64<matrix>(first), high = rgb_64<matrix>(second);
        pack_u8(low.r, high.r).template store<dst_aligned, streaming>(r + at);
        pack_u8(low.g, high.g).template store<dst_aligned, streaming>(g + at);
        pack_u8(low.b, high.b).template store<dst_aligned, streaming>(b + at);
    });

    for (; i + 2 <= count; i += 2)
        for (auto at = i; at < i + 2; ++at) {
            auto const pixel = rgb_64<p, matrix>(src[at * 2 + 1], src[i * 2], src[i * 2 + 2]);
            r[at] = pixel.r;
            g[at] = pixel.g;
            b[at] = pixel.b;
        }
}

// clang-format off
#define BODY(...) template void uyvy_to_planes::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, unsigned char*, unsigned char*, int, access);
QUILLO_BODIES(1, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
