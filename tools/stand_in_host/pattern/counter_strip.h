// A frame number as black and white cells that a program can read back from any received picture.
#pragma once

#include "tools/stand_in_host/pattern/canvas.h"

#include <cstdint>
#include <optional>

namespace quillo::stand_in {

// 32 cells of equal width fill the strip at the picture's top: white, black, 24 bits of the number (highest first,
// white is 1), 4 bits check (the exclusive or of the number's six nibbles and 0xA), black, white.
constexpr int counter_cells = 32;
constexpr std::uint32_t counter_limit = 1u << 24; // numbers wrap here

// The strip's height in a picture of this height.
int counter_strip_rows(int height);

void draw_counter(picture_view const& picture, std::uint32_t number);

// A picture's luma or any of its components that tells white from black.
struct brightness_plane
{
    unsigned char const* top;
    std::ptrdiff_t stride;
    int pixel_step; // bytes from a pixel to the next
    int width;
    int height;
};

// None where no intact strip stands.
std::optional<std::uint32_t> read_counter(brightness_plane const& plane);

} // namespace quillo::stand_in
