// The plug-in's own converters: always line by line, 8 pixels a block, then pairs (pixels in the compositor).
#include "tests/support/reference/reference.h"

namespace quillo::conversions::reference {
namespace {

unsigned char byte(int value) { return static_cast<unsigned char>(value); }

int cb(unsigned char const* bgra) { return 128 + ((112 * bgra[0] - 87 * bgra[1] - 26 * bgra[2]) >> 8); }

int cr(unsigned char const* bgra) { return 128 + ((112 * bgra[2] - 102 * bgra[1] - 10 * bgra[0]) >> 8); }

int y(unsigned char const* bgra) { return 16 + ((16 * bgra[0] + 157 * bgra[1] + 47 * bgra[2]) >> 8); }

int weight_of(int alpha) { return alpha + (alpha >> 7); }

int in_block(int fg, int dst, int alpha)
{
    int const w = weight_of(alpha);
    return clamp_to_byte((fg * w >> 8) + (dst * (256 - w) >> 8));
}

// Both weights are bytes: 256 is 0, so alpha 0 and alpha 255 give 0.
int in_tail(int fg, int dst, int alpha)
{
    int const w = weight_of(alpha) % 256;
    int const v = (256 - w) % 256;
    return (fg * w + dst * v) >> 8;
}

} // namespace

void bgra_to_uyvy_a(call const& c)
{
    bool tail_opaque = true;
    bool blocks_opaque = true;
    bool any_block = false;
    // Blue of pixels 0 and 4 of every block takes part in the test.
    int blue_0 = 255;
    int blue_4 = 255;
    for (run const& r : runs_of(c, false)) {
        unsigned char const* src = r.at[0];
        int const in_blocks = r.count / 8 * 8;
        for (int i = 0; i < r.count; i += 2) {
            unsigned char const* even = src + 4 * i;
            unsigned char const* odd = even + 4;
            r.at[1][2 * i] = byte(cb(even));
            r.at[1][2 * i + 1] = byte(y(even));
            r.at[1][2 * i + 2] = byte(cr(odd));
            r.at[1][2 * i + 3] = byte(y(odd));
            r.at[2][i] = even[3];
            r.at[2][i + 1] = odd[3];
            bool const opaque = even[3] == 255 && odd[3] == 255;
            if (i >= in_blocks) {
                tail_opaque = tail_opaque && opaque;
                continue;
            }
            any_block = true;
            blocks_opaque = blocks_opaque && opaque;
            if (i % 8 == 0)
                blue_0 &= even[0];
            if (i % 8 == 4)
                blue_4 &= even[0];
        }
    }
    *c.all_opaque = any_block && tail_opaque && blocks_opaque && blue_0 != 255 && blue_4 != 255;
}

void yuya_to_uyvy_a(call const& c)
{
    bool opaque = true;
    bool any_block = false;
    for (run const& r : runs_of(c, false))
        for (int i = 0; i < r.count; i += 2) {
            unsigned char const* even = r.at[0] + 4 * i; // Cr, Cb, Y, A
            unsigned char const* odd = even + 4;
            r.at[1][2 * i] = even[1];
            r.at[1][2 * i + 1] = even[2];
            r.at[1][2 * i + 2] = even[0];
            r.at[1][2 * i + 3] = odd[2];
            r.at[2][i] = even[3];
            r.at[2][i + 1] = odd[3];
            opaque = opaque && even[3] == 255 && odd[3] == 255;
            any_block = any_block || r.count >= 8;
        }
    *c.all_opaque = any_block && opaque;
}

void composite(call const& c)
{
    for (run const& r : runs_of(c, false))
        for (int i = 0; i < r.count; ++i)
            for (int k = 2 * i; k < 2 * i + 2; ++k) {
                int const alpha = r.at[1][i];
                r.at[2][k] = byte(i < r.count / 8 * 8 ? in_block(r.at[0][k], r.at[2][k], alpha)
                                                      : in_tail(r.at[0][k], r.at[2][k], alpha));
            }
}

} // namespace quillo::conversions::reference
