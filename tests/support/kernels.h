// Every kernel instance as a row of its own: one run of pixels, one line high, called directly.
#pragma once

#include "tests/support/conversions.h"

namespace quillo::conversions {

// Names are "line::vuya::uyvy_a<101>": the flags in their order, 1 for true.
std::vector<conversion> const& all_kernels();

} // namespace quillo::conversions
