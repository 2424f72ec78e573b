// libswscale, for any pair of its formats.
#pragma once

#include "bench/row.h"

namespace bench {

// Formats by their libav names ("bgra", "uyvy422"); planes in the frame's order.
candidate swscale(char const* from, char const* to, job work);

} // namespace bench
