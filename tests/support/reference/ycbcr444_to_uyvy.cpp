// Four-byte 4:4:4 to UYVY. Blocks of 8 pixels and the pairs after the last whole block differ where it is said.
#include "tests/support/reference/reference.h"

namespace quillo::conversions::reference {
namespace {

struct pixel
{
    int y, cb, cr, a;
};

pixel read(unsigned char const* src, int index, order444 order)
{
    unsigned char const* p = src + 4 * index;
    if (order == order444::ycbcr)
        return {p[0], p[1], p[2], p[3]};
    return {p[2], p[1], p[0], p[3]};
}

// U and V of the even pixel. An odd count takes one pixel beyond the run.
void write_pair(unsigned char* dst, int even, pixel const& p0, pixel const& p1)
{
    dst[2 * even] = static_cast<unsigned char>(p0.cb);
    dst[2 * even + 1] = static_cast<unsigned char>(p0.y);
    dst[2 * even + 2] = static_cast<unsigned char>(p0.cr);
    dst[2 * even + 3] = static_cast<unsigned char>(p1.y);
}

// black is 128 or 16.
int over_black_in_block(int x, int alpha, int black)
{
    return clamp_to_byte(((255 - alpha) * black * 256 >> 16) + (x * 256 * (alpha + 1) >> 16));
}

int over_black_in_tail(int x, int alpha, int black) { return black + (((x - black) * (alpha + 1)) >> 8); }

bool is_joined(call const& c)
{
    return c.height == 1 || (c.planes[0].stride == c.width * 4 && c.planes[1].stride == c.width * 2 &&
                             (!c.planes[2].data || c.planes[2].stride == c.width));
}

} // namespace

void reorder_to_uyvy(unsigned char const* src, unsigned char* dst, int count, order444 order)
{
    for (int i = 0; i < count; i += 2)
        write_pair(dst, i, read(src, i, order), read(src, i + 1, order));
}

void over_black_to_uyvy(unsigned char const* src, unsigned char* dst, int count, order444 order)
{
    int const in_blocks = count / 8 * 8;
    for (int i = 0; i < count; i += 2) {
        pixel p0 = read(src, i, order);
        pixel p1 = read(src, i + 1, order);
        bool const block = i < in_blocks;
        p0.cb = block ? over_black_in_block(p0.cb, p0.a, 128) : over_black_in_tail(p0.cb, p0.a, 128);
        p0.y = block ? over_black_in_block(p0.y, p0.a, 16) : over_black_in_tail(p0.y, p0.a, 16);
        // The even pixel's Cr goes with the odd pixel's alpha.
        p0.cr = block ? over_black_in_block(p0.cr, p1.a, 128) : over_black_in_tail(p0.cr, p1.a, 128);
        p1.y = block ? over_black_in_block(p1.y, p1.a, 16) : over_black_in_tail(p1.y, p1.a, 16);
        write_pair(dst, i, p0, p1);
    }
}

bool split_to_uyvy_a(unsigned char const* src, unsigned char* dst, unsigned char* alpha, int count, order444 order)
{
    reorder_to_uyvy(src, dst, count, order);

    int const in_blocks = count / 8 * 8;
    // Lanes 0..7 stand for pixels 0 0 1 1 2 2 3 3 of every block, lanes 8..15 for pixels 4 4 5 5 6 6 7 7.
    int value = 65535;
    for (int i = 0; i < in_blocks; ++i) {
        alpha[i] = src[4 * (i / 8 * 8 + i % 8 / 2) + 3];
        int const lane = i % 8 * 2;
        if (src[4 * i + 3] != 255)
            value &= ~(3 << lane);
    }
    for (int i = in_blocks < 0 ? 0 : in_blocks; i < count; i += 2) {
        alpha[i] = src[4 * i + 3];
        alpha[i + 1] = src[4 * i + 7];
        value = value & alpha[i] & alpha[i + 1];
    }
    return value == 255;
}

void reorder_to_uyvy(call const& c, order444 order)
{
    for (run const& r : runs_of(c, is_joined(c)))
        reorder_to_uyvy(r.at[0], r.at[1], r.count, order);
}

void over_black_to_uyvy(call const& c, order444 order)
{
    for (run const& r : runs_of(c, is_joined(c)))
        over_black_to_uyvy(r.at[0], r.at[1], r.count, order);
}

void split_to_uyvy_a(call const& c, order444 order)
{
    bool opaque = true;
    for (run const& r : runs_of(c, is_joined(c)))
        if (!split_to_uyvy_a(r.at[0], r.at[1], r.at[2], r.count, order))
            opaque = false;
    if (c.all_opaque)
        *c.all_opaque = opaque;
}

} // namespace quillo::conversions::reference
