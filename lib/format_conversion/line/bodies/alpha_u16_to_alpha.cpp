#include "lib/format_conversion/line/alpha_u16_to_alpha.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void narrow_alpha::run(unsigned short const* src, unsigned char* dst, int count, access how)
{
    auto const* const bytes = reinterpret_cast<unsigned char const*>(src);

    auto i = blocks<p, 16>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const* const from = bytes + at * 2;
        if constexpr (fetched_ahead<p, streaming>)
            prefetch<p, 32 * V::lanes>(from, how.ahead);
        pack_all_u8(shift_right_u16(V::template load<src_aligned>(from), by<8>),
                    shift_right_u16(V::template load<src_aligned>(from + 16 * V::lanes), by<8>))
            .template store<dst_aligned, streaming>(dst + at);
    });
    for (; i < count; ++i)
        dst[i] = bytes[i * 2 + 1];
}

// clang-format off
#define BODY(...) template void narrow_alpha::run<here, __VA_ARGS__>(unsigned short const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
