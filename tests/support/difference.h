// What differs between two pieces of memory, for a person to read.
#pragma once

#include <cstddef>
#include <string>

namespace quillo::conversions {

// The first differing byte as line, byte and pixel (origin is where line 0 begins), and a map of its surroundings with
// an x for each wrong byte. Empty when nothing differs.
std::string first_difference(unsigned char const* expected, unsigned char const* got, std::size_t bytes,
                             std::ptrdiff_t origin, int stride, int bytes_per_pixel);

} // namespace quillo::conversions
