#include "lib/format_conversion/line/rgb_to_ycbcr444.h"

#include "lib/format_conversion/line/blocks.h"
#include "lib/format_conversion/line/bodies/rgb_sums.h"
#include "lib/format_conversion/line/instances.h"

namespace Processing::FXlib::format_conversion::line {

namespace {

constexpr lane<int> c_Y{16 * 128}, c_C{128 * 256};
constexpr lane<unsigned> byte_1{0xFF00}, byte_2{0xFF0000}, k_A_mask{0xFF000000u};

} // namespace

// Unaligned accesses whatever the flags say: a single line comes here as aligned wherever it lies.
template <processor p, bool, bool, bool matrix, bool order, bool crcby_order, bool fourth_byte>
void rgb_to_ycbcr444::run(unsigned char const* src, unsigned char* dst, int width, access how)
{
    constexpr auto weights = detail::from_rgb<matrix>;
    static constexpr auto k_Y(in_source_order<order>(weights.y));
    static constexpr auto k_Cb(in_source_order<order>(weights.cb));
    static constexpr auto k_Cr(in_source_order<order>(weights.cr));

    auto i = blocks<p, 8>(width, how, [&]<class V, bool streaming>(std::ptrdiff_t at) {
        auto const convert = [&](std::ptrdiff_t offset) {
            auto const pixels = V::template load<false>(src + offset);
            // With their offsets the sums are in 0..65535, so bits 8..15 of a chroma sum are its byte.
            auto const y = shift_right_u32(dot_32(V::repeat(c_Y), pixels, V::repeat(k_Y)), by<7>);
            auto const cb = dot_32(V::repeat(c_C), pixels, V::repeat(k_Cb));
            auto const cr = dot_32(V::repeat(c_C), pixels, V::repeat(k_Cr));
            auto const outer = crcby_order ? shift_left_32(y, by<16>) | shift_right_u32(cr, by<8>)
                                           : or_masked(y, shift_left_32(cr, by<8>), V::repeat(byte_2));
            auto const colour = or_masked(outer, cb, V::repeat(byte_1));
            auto const fourth = V::repeat(k_A_mask);
            auto const all = fourth_byte == with_alpha ? or_masked(colour, pixels, fourth) : colour | fourth;
            all.template store<false, streaming>(dst + offset);
        };
        prefetch<p, 32 * V::lanes>(src + at * 4, how.ahead);
        convert(at * 4);
        convert(at * 4 + 16 * V::lanes);
    });

    auto const level = [](int sum, int offset, int shift) {
        return static_cast<unsigned char>((sum + offset) >> shift);
    };
    for (; i < width; ++i) {
        unsigned char const* const pixel = src + i * 4;
        dst[i * 4 + 1] = level(weighted_sum<p, order>(weights.cb, pixel), 128 * 256, 8);
        dst[i * 4 + 3] = fourth_byte == with_alpha ? pixel[3] : 255;
        // Y and Cr meet in the run's first pixel. They change places between the families, and once more in the Y, Cb,
        // Cr order where that pixel is their own.
        bool const y_at_2 = (fourth_byte == filled) != (!crcby_order && i == 0);
        dst[y_at_2 ? 2 : 0] = level(weighted_sum<p, order>(weights.y, pixel), 16 * 128, 7);
        dst[y_at_2 ? 0 : 2] = level(weighted_sum<p, order>(weights.cr, pixel), 128 * 256, 8);
    }
}

// clang-format off
#define BODY(...) template void rgb_to_ycbcr444::run<here, __VA_ARGS__>(unsigned char const*, unsigned char*, int, access);
QUILLO_BODIES(4, BODY)
#undef BODY
// clang-format on

} // namespace Processing::FXlib::format_conversion::line
