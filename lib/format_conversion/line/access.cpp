#include "lib/format_conversion/line/access.h"

#include "lib/format_conversion/line/vec.h"

namespace Processing::FXlib::format_conversion::line {

void fence_streamed() { _mm_sfence(); }

} // namespace Processing::FXlib::format_conversion::line
