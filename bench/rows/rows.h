// One function a family: it appends the family's rows. A new conversion is a row in its family's file.
#pragma once

#include "bench/row.h"

namespace bench {

void add_copies(std::vector<row>& rows);
void add_ycbcr444_to_uyvy(std::vector<row>& rows);
void add_from_rgb(std::vector<row>& rows);
void add_uyvy_to_rgb(std::vector<row>& rows);
void add_repacking(std::vector<row>& rows);
void add_deep_and_special(std::vector<row>& rows);
// Last: what the others have left out.
void add_rest_of_table(std::vector<row>& rows);

} // namespace bench
