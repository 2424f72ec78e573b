#include "lib/format_conversion/line/p216_to_uyvy.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

template <processor p, bool src_aligned, bool dst_aligned>
void narrow_p216::run(unsigned short const* y, unsigned short const* uv, unsigned char* dst, int count, access how)
{
    static constexpr lane<unsigned short> high_byte{0xFF00};
    auto const* const y_bytes = reinterpret_cast<unsigned char const*>(y);
    auto const* const uv_bytes = reinterpret_cast<unsigned char const*>(uv);

    auto i = blocks<p, 8>(count, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const luma = V::template load<src_aligned>(y_bytes + at * 2) & V::repeat(high_byte);
        auto const chroma = shift_right_u16(V::template load<src_aligned>(uv_bytes + at * 2), by<8>);
        (luma | chroma).template store<dst_aligned, streaming>(dst + at * 2);
    });
    for (; i < count; ++i) {
        dst[i * 2] = uv_bytes[i * 2 + 1];
        dst[i * 2 + 1] = y_bytes[i * 2 + 1];
    }
}

// clang-format off
#define BODY(...) template void narrow_p216::run<here, __VA_ARGS__>(unsigned short const*, unsigned short const*, unsigned char*, int, access);
QUILLO_BODIES(0, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
