// A small conversion with bytes that a person can follow: done by the library, by every variant of the processor, and
// by the plain reference, which all have to agree.
#pragma once

#include "tests/support/conversions.h"

#include <string_view>
#include <vector>

namespace quillo::conversions {

using bytes = std::vector<unsigned char>;

// What destination bytes hold before.
inline constexpr unsigned char untouched = 0xEE;

struct example
{
    std::string_view name;
    int width = 0;
    int height = 1;
    std::vector<bytes> sources;    // whole planes, with what lies beyond a line where that is read
    std::vector<int> strides = {}; // of all planes; tight when empty
    int option = 0;
    bool ask_opaque = true;
    bytes background = {}; // what destinations hold before, where it is not untouched
};

struct outcome
{
    std::vector<bytes> planes; // what was written, and 8 bytes after the last one that may be
    bool all_opaque = false;
};

outcome convert(example const& e);

// Pieces one after the other, times over.
bytes join(std::vector<bytes> const& pieces, int times = 1);
bytes part(bytes const& whole, std::size_t from, std::size_t count);

} // namespace quillo::conversions
