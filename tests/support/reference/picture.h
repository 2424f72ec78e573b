// The runs of pixels that a call falls into.
#pragma once

#include "tests/support/call.h"

#include <array>
#include <vector>

namespace quillo::conversions::reference {

struct run
{
    std::array<unsigned char*, 5> at{}; // where the run begins in each plane
    int count = 0;
};

// One run over the whole picture when joined, its length a 32-bit product; else one run per line. None without lines.
std::vector<run> runs_of(call const& c, bool joined);

// The same call with only these planes of it.
call with_planes(call const& c, std::vector<int> const& chosen);

// Limits to what a byte can hold.
int clamp_to_byte(int value);

} // namespace quillo::conversions::reference
