// One call of a front end written down: what any of them can be given.
#pragma once

#include <array>

namespace quillo::conversions {

struct plane
{
    unsigned char* data = nullptr; // first line to be converted
    int stride = 0;                // bytes, may be negative
};

// Planes stand in the order of the argument list; planes that share one stride argument repeat it.
struct call
{
    std::array<plane, 5> planes{};
    int width = 0;
    int height = 0;
    int option = 0;             // matrix number, expand, compress or fill value, where the front end takes one
    bool* all_opaque = nullptr; // also receives what a bool front end returns
};

} // namespace quillo::conversions
