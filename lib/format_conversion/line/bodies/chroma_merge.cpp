#include "lib/format_conversion/line/chroma_merge.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void merge_chroma::run(unsigned char const* u, unsigned char const* v, unsigned char* uv, int count, access how)
{
    auto i = blocks<p, 32>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        prefetch<p, 16 * V::lanes>(u + at / 2, how.ahead);
        prefetch<p, 16 * V::lanes>(v + at / 2, how.ahead);
        auto const cb = V::template load<src_aligned>(u + at / 2), cr = V::template load<src_aligned>(v + at / 2);
        V::template store_pairs<dst_aligned, streaming>(uv + at, zip_low_8(cb, cr), zip_high_8(cb, cr));
    });
    for (; i + 2 <= count; i += 2) {
        uv[i] = u[i / 2];
        uv[i + 1] = v[i / 2];
    }
}

// clang-format off
#define BODY(...) template void merge_chroma::run<here, __VA_ARGS__>(unsigned char const*, unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
