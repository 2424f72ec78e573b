#include "tools/stand_in_host/pattern/digits.h"

#include <algorithm>

namespace quillo::stand_in {

namespace {

constexpr int digit_count = 8;

// Bits: top, upper left, upper right, middle, lower left, lower right, bottom; the highest is the top.
constexpr unsigned segments[10] = {0b1110111, 0b0010010, 0b1011101, 0b1011011, 0b0111010,
                                   0b1101011, 0b1101111, 0b1010010, 0b1111111, 0b1111011};

void draw_digit(picture_view const& picture, rectangle where, unsigned digit)
{
    int const width = where.right - where.left;
    int const height = where.bottom - where.top;
    int const thick = std::max(std::min(width, height) / 6, 1);
    int const middle = where.top + (height - thick) / 2;
    rectangle const bars[7] = {
        {where.left, where.top, where.right, where.top + thick},
        {where.left, where.top, where.left + thick, middle + thick},
        {where.right - thick, where.top, where.right, middle + thick},
        {where.left, middle, where.right, middle + thick},
        {where.left, middle, where.left + thick, where.bottom},
        {where.right - thick, middle, where.right, where.bottom},
        {where.left, where.bottom - thick, where.right, where.bottom},
    };
    for (int k = 0; k < 7; ++k)
        if ((segments[digit] >> (6 - k) & 1) != 0)
            fill(picture, bars[k], white);
}

} // namespace

void draw_number(picture_view const& picture, rectangle where, std::uint64_t number)
{
    fill(picture, where, black);
    int const cell = (where.right - where.left) / digit_count;
    int const margin_y = (where.bottom - where.top) / 6;
    for (int k = digit_count - 1; k >= 0; --k, number /= 10) {
        int const left = where.left + k * cell;
        draw_digit(picture, {left + cell / 5, where.top + margin_y, left + cell - cell / 5, where.bottom - margin_y},
                   static_cast<unsigned>(number % 10));
    }
}

} // namespace quillo::stand_in
