#include "tools/stand_in_host/pattern/counter_strip.h"

#include <algorithm>

namespace quillo::stand_in {

namespace {

// Cell 0 is the highest bit.
std::uint32_t cells_of(std::uint32_t number)
{
    std::uint32_t check = 0xA;
    for (int shift = 0; shift < 24; shift += 4)
        check ^= number >> shift & 0xF;
    return 0x80000001u | number << 6 | check << 2;
}

bool is_white(std::uint32_t cells, int cell) { return (cells >> (counter_cells - 1 - cell) & 1) != 0; }

} // namespace

int counter_strip_rows(int height) { return std::min(std::max(height / 18, 4), height); }

void draw_counter(picture_view const& picture, std::uint32_t number)
{
    std::uint32_t const cells = cells_of(number % counter_limit);
    int const rows = counter_strip_rows(picture.height);
    for (int cell = 0; cell < counter_cells; ++cell)
        fill(picture, {cell * picture.width / counter_cells, 0, (cell + 1) * picture.width / counter_cells, rows},
             is_white(cells, cell) ? white : black);
}

std::optional<std::uint32_t> read_counter(brightness_plane const& plane)
{
    int const y = counter_strip_rows(plane.height) / 2;
    std::uint32_t cells = 0;
    for (int cell = 0; cell < counter_cells; ++cell) {
        int const x = (2 * cell + 1) * plane.width / (2 * counter_cells);
        bool const bright = plane.top[y * plane.stride + static_cast<std::ptrdiff_t>(x) * plane.pixel_step] > 127;
        cells = cells << 1 | (bright ? 1 : 0);
    }
    std::uint32_t const number = cells >> 6 & (counter_limit - 1);
    return cells == cells_of(number) ? std::optional(number) : std::nullopt;
}

} // namespace quillo::stand_in
