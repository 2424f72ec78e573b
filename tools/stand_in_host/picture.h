// Pictures as the stand-in host hands them over: 8 bits a component, four components a pixel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillo::stand_in {

// Named by the components in memory order. vuya is BT.709, limited range; bgra is full range, alpha straight.
enum class pixel_layout { vuya, bgra };

constexpr int bytes_per_pixel = 4;

// A picture to draw into; owns nothing. Row 0 is the top row of the picture, wherever it lies in memory.
struct picture_view
{
    pixel_layout layout;
    int width;
    int height;
    unsigned char* top;
    std::ptrdiff_t stride; // bytes from a row to the one below it, negative where the bottom row comes first in memory

    // Where a source may note what stands in the buffer, so that it need not draw again what does not move. 0 or the
    // note of whoever drew here last; null where nothing is kept.
    std::uint64_t* note = nullptr;

    unsigned char* row(int y) const { return top + y * stride; }
};

} // namespace quillo::stand_in
