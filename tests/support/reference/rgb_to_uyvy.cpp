// RGB to UYVY. Cb comes from the left pixel of a pair and Cr from the right one, never an average.
#include "tests/support/reference/weights.h"

namespace quillo::conversions::reference {
namespace {

// Green 80: the premultiplying conversions have a set of their own.
weight_set const premultiplying{{23, 80, 8}, {-26, -87, 112}, {112, -102, -10}};
// Luma of the three-byte conversion has the scale 1/256.
weight_set const three_bytes{{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};

void store(unsigned char* group, int u, int y0, int v, int y1)
{
    group[0] = static_cast<unsigned char>(clamp_to_byte(u));
    group[1] = static_cast<unsigned char>(clamp_to_byte(y0));
    group[2] = static_cast<unsigned char>(clamp_to_byte(v));
    group[3] = static_cast<unsigned char>(clamp_to_byte(y1));
}

void store_pair(unsigned char* group, weight_set const& w, rgb const& left, rgb const& right, int luma_shift)
{
    store(group, 128 + (weighted(w.cb, left) >> 8), 16 + (weighted(w.luma, left) >> luma_shift),
          128 + (weighted(w.cr, right) >> 8), 16 + (weighted(w.luma, right) >> luma_shift));
}

rgb scaled(rgb const& p, int alpha) { return {p.r * alpha >> 8, p.g * alpha >> 8, p.b * alpha >> 8, p.a}; }

// Pixels 2, 3, 6 and 7 of a block are scaled by the alpha of pixels 0, 1, 4 and 5.
int scaling_pixel(int index) { return index % 4 < 2 ? index : index - 2; }

int tail_luma(rgb const& p)
{
    int const sum = (weighted(premultiplying.luma, p) * p.a >> 8) + 2048;
    return sum >= 32640 ? 255 : sum >> 7;
}

// Both chroma bytes of a tail pair take the Cb weights.
int tail_chroma(rgb const& p) { return ((weighted(premultiplying.cb, p) * p.a >> 8) + 32768) >> 8; }

bool is_joined(call const& c, int source_bytes)
{
    return c.height == 1 || (c.planes[0].stride == c.width * source_bytes && c.planes[1].stride == c.width * 2 &&
                             (!c.planes[2].data || c.planes[2].stride == c.width));
}

} // namespace

void rgb_to_uyvy(unsigned char const* src, unsigned char* dst, int count, matrix m, rgb_order order)
{
    for (int i = 0; i + 1 < count; i += 2)
        store_pair(dst + 2 * i, weights_of(m), read_rgb(src + 4 * i, order), read_rgb(src + 4 * i + 4, order), 7);
}

void premultiplied_rgb_to_uyvy(unsigned char const* src, unsigned char* dst, int count, rgb_order order)
{
    int const in_blocks = count / 8 * 8;
    for (int i = 0; i + 1 < count; i += 2) {
        rgb const left = read_rgb(src + 4 * i, order);
        rgb const right = read_rgb(src + 4 * i + 4, order);
        if (i < in_blocks) {
            int const left_alpha = src[4 * scaling_pixel(i) + 3];
            int const right_alpha = src[4 * scaling_pixel(i + 1) + 3];
            store_pair(dst + 2 * i, premultiplying, scaled(left, left_alpha), scaled(right, right_alpha), 7);
        } else {
            store(dst + 2 * i, tail_chroma(left), tail_luma(left), tail_chroma(right), tail_luma(right));
        }
    }
}

bool rgb_to_uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, matrix m,
                   rgb_order order)
{
    rgb_to_uyvy(src, dst, count, m, order);
    bool opaque = count >= 2;
    for (int i = 0; i < count / 2 * 2; ++i) {
        alpha[i] = src[4 * i + 3];
        if (alpha[i] != 255)
            opaque = false;
    }
    return opaque;
}

void bgr_to_uyvy(unsigned char const* src, unsigned char* dst, int count)
{
    for (int i = 0; i < count; i += 2) {
        unsigned char const* p = src + 3 * i;
        store_pair(dst + 2 * i, three_bytes, {p[2], p[1], p[0], 0}, {p[5], p[4], p[3], 0}, 8);
    }
}

void rgb_to_uyvy(call const& c, matrix m, rgb_order order)
{
    for (run const& r : runs_of(c, is_joined(c, 4)))
        rgb_to_uyvy(r.at[0], r.at[1], r.count, m, order);
}

void premultiplied_rgb_to_uyvy(call const& c, rgb_order order)
{
    for (run const& r : runs_of(c, is_joined(c, 4)))
        premultiplied_rgb_to_uyvy(r.at[0], r.at[1], r.count, order);
}

void rgb_to_uyvy_a(call const& c, matrix m, rgb_order order)
{
    bool opaque = true;
    for (run const& r : runs_of(c, is_joined(c, 4)))
        if (!rgb_to_uyvy_a(r.at[0], r.at[1], r.at[2], r.count, m, order))
            opaque = false;
    if (c.all_opaque)
        *c.all_opaque = opaque;
}

void bgr_to_uyvy(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, 3)))
        bgr_to_uyvy(r.at[0], r.at[1], r.count);
}

} // namespace quillo::conversions::reference
