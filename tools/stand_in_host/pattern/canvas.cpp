#include "tools/stand_in_host/pattern/canvas.h"
#include "tools/stand_in_host/media/color_matrix.h"

#include <algorithm>
#include <cstring>

namespace quillo::stand_in {

std::array<unsigned char, bytes_per_pixel> pixel(pixel_layout layout, color c)
{
    if (layout == pixel_layout::bgra)
        return {c.b, c.g, c.r, c.a};
    static color_matrix const to_video(rgb_full, bt709_limited);
    unsigned char y, u, v;
    to_video.apply({{&c.r, &c.g, &c.b}}, {{&y, &u, &v}}, 1);
    return {v, u, y, c.a};
}

void fill(picture_view const& picture, rectangle where, color c)
{
    where.left = std::max(where.left, 0);
    where.top = std::max(where.top, 0);
    where.right = std::min(where.right, picture.width);
    where.bottom = std::min(where.bottom, picture.height);
    if (where.left >= where.right || where.top >= where.bottom)
        return;

    auto const value = pixel(picture.layout, c);
    std::size_t const offset = static_cast<std::size_t>(where.left) * bytes_per_pixel;
    std::size_t const size = static_cast<std::size_t>(where.right - where.left) * bytes_per_pixel;
    unsigned char* const first = picture.row(where.top) + offset;
    for (std::size_t k = 0; k < size; k += bytes_per_pixel)
        std::memcpy(first + k, value.data(), value.size());
    for (int y = where.top + 1; y < where.bottom; ++y)
        std::memcpy(picture.row(y) + offset, first, size);
}

} // namespace quillo::stand_in
