// Rectangles of one colour in a picture.
#pragma once

#include "tools/stand_in_host/picture.h"

#include <array>

namespace quillo::stand_in {

struct color
{
    unsigned char r, g, b;
    unsigned char a = 255;
};

constexpr color black{0, 0, 0};
constexpr color white{255, 255, 255};

struct rectangle
{
    int left, top, right, bottom; // right and bottom lie outside
};

// The four bytes of a pixel in the layout.
std::array<unsigned char, bytes_per_pixel> pixel(pixel_layout layout, color c);

// Fills what of the rectangle lies inside the picture.
void fill(picture_view const& picture, rectangle where, color c);

// Fills columns with colours of their own: shade(x, count) for the count columns of the rectangle.
template <typename Shade>
void fill_columns(picture_view const& picture, rectangle where, Shade shade)
{
    for (int x = where.left; x < where.right; ++x)
        fill(picture, {x, where.top, x + 1, where.bottom}, shade(x - where.left, where.right - where.left));
}

} // namespace quillo::stand_in
