// What source planes are filled with.
#pragma once

#include "tests/support/seed.h"

#include <cstddef>

namespace quillo::conversions {

enum class contents {
    noise,
    extremes, // 0 and 255
    edges,    // values around the ends of every range
    zeros,
    ones,            // 255 everywhere
    opaque,          // noise, but every fourth byte of a pixel is 255
    opaque_extremes, // the same with extremes
    almost_opaque,   // opaque but for one pixel
    half_opaque      // pixels 0..3 of every eight are opaque, pixels 4..7 are not
};
inline constexpr int kinds_of_contents = 9;

constexpr bool is_opaque_kind(contents kind) { return kind >= contents::opaque; }

char const* name(contents kind);

// Opaque kinds give plain noise or extremes here: only the picture knows where its fourth bytes are.
void fill(unsigned char* data, std::size_t bytes, contents kind, random_numbers& random);

} // namespace quillo::conversions
