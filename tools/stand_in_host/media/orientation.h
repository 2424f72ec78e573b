// Which way up a picture was taken.
#pragma once

#include "tools/stand_in_host/picture.h"

#include <string_view>

namespace quillo::stand_in {

// What is done to the stored picture to show it: mirrored first, left to right, then turned clockwise.
// Aligned so that it is atomic without a lock.
struct alignas(8) orientation
{
    bool mirrored = false;
    int quarter_turns = 0; // 0 to 3

    bool is_upright() const { return !mirrored && quarter_turns == 0; }
    bool swaps_sides() const { return quarter_turns % 2 != 0; }
};

// From the tag's text, such as "rotate-90" or "flip-rotate-0"; upright where it means nothing.
orientation parse_orientation(std::string_view tag);

// Copies a stored picture into one of the shown size.
void copy_upright(picture_view const& stored, orientation how, picture_view const& shown);

} // namespace quillo::stand_in
