// RGB to four-byte YCbCr. The values are the same everywhere; the last (count mod 8) pixels are stored differently.
#include "tests/support/reference/weights.h"

namespace quillo::conversions::reference {

void rgb_to_ycbcr444(unsigned char const* src, unsigned char* dst, int count, matrix m, rgb_order order,
                     ycbcr_order target, fourth_byte fourth)
{
    weight_set const& w = weights_of(m);
    bool const with_alpha = fourth == fourth_byte::alpha;
    int const in_blocks = count / 8 * 8;
    for (int i = 0; i < count; ++i) {
        rgb const p = read_rgb(src + 4 * i, order);
        auto const y = static_cast<unsigned char>(clamp_to_byte(16 + (weighted(w.luma, p) >> 7)));
        auto const cb = static_cast<unsigned char>(clamp_to_byte(128 + (weighted(w.cb, p) >> 8)));
        auto const cr = static_cast<unsigned char>(clamp_to_byte(128 + (weighted(w.cr, p) >> 8)));

        // Cb and the fourth byte are always at home.
        dst[4 * i + 1] = cb;
        dst[4 * i + 3] = with_alpha ? static_cast<unsigned char>(p.a) : 255;

        if (i < in_blocks) {
            dst[4 * i] = target == ycbcr_order::ycbcr ? y : cr;
            dst[4 * i + 2] = target == ycbcr_order::ycbcr ? cr : y;
            continue;
        }
        // Y and Cr of a tail pixel go to the first pixel of the run: Y to byte 0 with alpha, to byte 2 with a filler,
        // and the other way round for pixel 0 of a short run in the Y, Cb, Cr order.
        bool const first_of_short_run = i == 0 && target == ycbcr_order::ycbcr;
        bool const y_to_byte_0 = with_alpha != first_of_short_run;
        dst[0] = y_to_byte_0 ? y : cr;
        dst[2] = y_to_byte_0 ? cr : y;
    }
}

void rgb_to_ycbcr444(call const& c, matrix m, rgb_order order, ycbcr_order target, fourth_byte fourth)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 4 && c.planes[1].stride == c.width * 4);
    for (run const& r : runs_of(c, joined))
        rgb_to_ycbcr444(r.at[0], r.at[1], r.count, m, order, target, fourth);
}

} // namespace quillo::conversions::reference
