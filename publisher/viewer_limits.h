// How many may watch at once.
#pragma once

#include <cstddef>

namespace quillo::publisher {

struct viewer_limits
{
    std::size_t raw = 16;     // of each uncompressed mount of a source
    std::size_t encoded = 64; // of a source
};

} // namespace quillo::publisher
