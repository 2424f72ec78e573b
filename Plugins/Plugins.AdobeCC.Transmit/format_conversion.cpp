#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"

#include "lib/format_conversion/alignment.h"
#include "lib/format_conversion/detail/weights.h"
#include "lib/format_conversion/line/vec.h"

#include <algorithm>

#pragma GCC diagnostic ignored "-Wignored-qualifiers"

using Processing::FXlib::format_conversion::is_aligned;
using namespace Processing::FXlib::format_conversion::line;

namespace {

using V = vec<here, 1>;

// The AND of what blocks and tails have seen of alpha.
struct alphas
{
    V blocks = V::ones();
    int tails = 255;

    // The blocks' own alphas are bytes 0..7; what bytes 8..15 have gathered must not be 255 then. Without a block they
    // are.
    bool opaque() const { return tails == 255 && blocks.mask_of_255() == 0x00FF; }
};

// Bytes 0..3 of both, then bytes 4..7 of both.
V gathered(V low, V high, V order) { return zip_low_32(shuffle(low, order), shuffle(high, order)); }

// The instance for two run-time alignments.
template <class Choose>
auto by_alignment(bool src_aligned, bool dst_aligned, Choose const& instance)
{
    if (src_aligned)
        return dst_aligned ? instance.template operator()<true, true>() : instance.template operator()<true, false>();
    return dst_aligned ? instance.template operator()<false, true>() : instance.template operator()<false, false>();
}

unsigned char byte_of(int sum, int from, int to, int offset)
{
    return static_cast<unsigned char>(std::clamp(sum >> 8, from, to) + offset);
}

} // namespace

template <bool src_aligned, bool dst_aligned>
bool const convert_BGRA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height)
{
    constexpr auto weights = Processing::FXlib::format_conversion::detail::from_rgb_fine;
    // Green stands in alpha's place too and takes part of its weight there, so that the parts of luma fit signed bytes.
    constexpr int green = 80;
    static constexpr lane<unsigned char> k_bgrg{0, 1, 2, 1, 4, 5, 6, 5, 8, 9, 10, 9, 12, 13, 14, 13};
    static constexpr lane<signed char> k_y{weights.y.b, green, weights.y.r, weights.y.g - green};
    static constexpr lane<signed char> k_uv{weights.cb.b, weights.cb.g, weights.cb.r, 0,
                                            weights.cr.b, weights.cr.g, weights.cr.r, 0};
    static constexpr lane<unsigned short> k_const_uv{128 * 256}, k_const_y{16 * 256}, k_high_bytes{0xFF00};
    // The last eight bytes of a block are blue of its pixels 0 and 4, four times each.
    static constexpr lane<unsigned char> k_shuffle{3, 7, 11, 15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

    alphas seen;
    for (int n = 0; n < height; ++n, src += src_stride, dst += dst_stride, alpha += alpha_stride) {
        int i = 0;
        for (; i + 8 <= width; i += 8) {
            auto const [low, high] = V::load_pairs<src_aligned>(src + i * 4);
            V const block = gathered(low, high, V::repeat(k_shuffle));
            block.store_low_halves<false>(alpha + i);
            seen.blocks = seen.blocks & block;

            V const order = V::repeat(k_bgrg);
            vec_pair<V> const pixels{shuffle(low, order), shuffle(high, order)};
            V const uv = add_16(dot_16(vec_pair<V>{low, high}, V::repeat(k_uv)), V::repeat(k_const_uv));
            V const y = add_16(dot_u16(pixels, V::repeat(k_y)), V::repeat(k_const_y));
            (shift_right_u16(uv, by<8>) | (y & V::repeat(k_high_bytes)))
                .template store<dst_aligned, false>(dst + i * 2);
        }
        for (; i < width; i += 2) {
            unsigned char const* const even = src + i * 4;
            unsigned char const* const odd = even + 4;
            auto const sum = [](auto const& w, unsigned char const* p) { return w.b * p[0] + w.g * p[1] + w.r * p[2]; };
            alpha[i] = even[3];
            alpha[i + 1] = odd[3];
            seen.tails &= even[3] & odd[3];
            dst[i * 2] = byte_of(sum(weights.cb, even), -128, 127, 128);
            dst[i * 2 + 1] = byte_of(sum(weights.y, even), 0, 239, 16);
            dst[i * 2 + 2] = byte_of(sum(weights.cr, odd), -128, 127, 128);
            dst[i * 2 + 3] = byte_of(sum(weights.y, odd), 0, 239, 16);
        }
    }
    return seen.opaque();
}

template <bool src_aligned, bool dst_aligned>
bool const convert_YUYA_to_UYVY_A_impl(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                                       unsigned char* alpha, int alpha_stride, int width, int height)
{
    static constexpr lane<unsigned char> reorder_uyvy{1, 2, 0, 6, 9, 10, 8, 14, 255, 255, 255, 255, 255, 255, 255, 255};
    static constexpr lane<unsigned char> reorder_alpha{3,   7,   11,  15,  255, 255, 255, 255,
                                                       255, 255, 255, 255, 255, 255, 255, 255};

    alphas seen;
    for (int n = 0; n < height; ++n, src += src_stride, dst += dst_stride, alpha += alpha_stride) {
        int i = 0;
        for (; i + 8 <= width; i += 8) {
            auto const [low, high] = V::load_pairs<src_aligned>(src + i * 4);
            V const order = V::repeat(reorder_uyvy);
            zip_low_64(shuffle(low, order), shuffle(high, order)).template store<dst_aligned, false>(dst + i * 2);
            V const block = gathered(low, high, V::repeat(reorder_alpha));
            block.store_low_halves<false>(alpha + i);
            seen.blocks = seen.blocks & block;
        }
        for (; i < width; i += 2) {
            unsigned char const* const even = src + i * 4;
            unsigned char const* const odd = even + 4;
            dst[i * 2] = even[1];
            dst[i * 2 + 1] = even[2];
            dst[i * 2 + 2] = even[0];
            dst[i * 2 + 3] = odd[2];
            alpha[i] = even[3];
            alpha[i + 1] = odd[3];
            seen.tails &= even[3] & odd[3];
        }
    }
    return seen.opaque();
}

template <bool src_aligned, bool dst_aligned>
void composite_impl(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride,
                    unsigned char* dst, int dst_stride, int width, int height)
{
    static constexpr lane<unsigned short> k_256{256};

    for (int n = 0; n < height; ++n, fg += fg_stride, dst += dst_stride, alpha += alpha_stride) {
        int i = 0;
        for (; i + 8 <= width; i += 8) {
            V const front = V::load<src_aligned>(fg + i * 2), back = V::load<dst_aligned>(dst + i * 2);
            V const eight = V::load_low_halves(alpha + i), a = zip_low_8(eight, eight);
            auto const blend = [](V front_256, V back_256, V a_16) {
                V const w = add_16(a_16, shift_right_u16(a_16, by<7>)); // 0..127, 129..256
                V const rest = sub_16(V::repeat(k_256), w);
                return add_16(mul_high_u16(front_256, w), mul_high_u16(back_256, rest));
            };
            V const zero = V::zero();
            pack_u8(blend(zip_low_8(zero, front), zip_low_8(zero, back), zip_low_8(a, zero)),
                    blend(zip_high_8(zero, front), zip_high_8(zero, back), zip_high_8(a, zero)))
                .template store<dst_aligned, false>(dst + i * 2);
        }
        for (; i < width; ++i) {
            // In bytes: at alpha 0 and 255 both weights are 0.
            auto const w = static_cast<unsigned char>(alpha[i] + (alpha[i] >> 7));
            auto const rest = static_cast<unsigned char>(256 - w);
            for (int byte = i * 2; byte < i * 2 + 2; ++byte)
                dst[byte] = static_cast<unsigned char>((fg[byte] * w + dst[byte] * rest) >> 8);
        }
    }
}

bool convert_BGRA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                            unsigned char* alpha, int alpha_stride, int width, int height)
{
    // The alpha plane is written eight bytes at a time and has no say.
    auto const worker =
        by_alignment(is_aligned(src, src_stride), is_aligned(dst, dst_stride),
                     []<bool src_al, bool dst_al>() { return &convert_BGRA_to_UYVY_A_impl<src_al, dst_al>; });
    return worker(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height);
}

bool convert_YUYA_to_UYVY_A(unsigned char const* src, int src_stride, unsigned char* dst, int dst_stride,
                            unsigned char* alpha, int alpha_stride, int width, int height)
{
    auto const worker =
        by_alignment(is_aligned(src, src_stride), is_aligned(dst, dst_stride),
                     []<bool src_al, bool dst_al>() { return &convert_YUYA_to_UYVY_A_impl<src_al, dst_al>; });
    return worker(src, src_stride, dst, dst_stride, alpha, alpha_stride, width, height);
}

void composite(unsigned char const* fg, int fg_stride, unsigned char const* alpha, int alpha_stride, unsigned char* dst,
               int dst_stride, int width, int height)
{
    auto const worker = by_alignment(is_aligned(fg, fg_stride, alpha, alpha_stride), is_aligned(dst, dst_stride),
                                     []<bool src_al, bool dst_al>() { return &composite_impl<src_al, dst_al>; });
    worker(fg, fg_stride, alpha, alpha_stride, dst, dst_stride, width, height);
}

// clang-format off
#define INSTANCE(...) \
    template bool const convert_BGRA_to_UYVY_A_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char*, int, unsigned char*, int, int, int); \
    template bool const convert_YUYA_to_UYVY_A_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char*, int, unsigned char*, int, int, int); \
    template void composite_impl<__VA_ARGS__>(unsigned char const*, int, unsigned char const*, int, unsigned char*, int, int, int);
INSTANCE(false, false)
INSTANCE(false, true)
INSTANCE(true, false)
INSTANCE(true, true)
// clang-format on
