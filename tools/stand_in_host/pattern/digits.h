// Numbers that a person can read.
#pragma once

#include "tools/stand_in_host/pattern/canvas.h"

#include <cstdint>

namespace quillo::stand_in {

// Eight seven-segment digits, white on black, that fill the rectangle.
void draw_number(picture_view const& picture, rectangle where, std::uint64_t number);

} // namespace quillo::stand_in
