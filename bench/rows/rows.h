// One function a family: it appends the family's rows. A new conversion is a row in its family's file.
#pragma once

#include "bench/row.h"

namespace bench {

void add_copies(std::vector<row>& rows);
void add_ycbcr444_to_uyvy(std::vector<row>& rows);

} // namespace bench
