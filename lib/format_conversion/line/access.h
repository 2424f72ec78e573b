// How a kernel is to touch memory. Has no influence on results.
#pragma once

#include <cstddef>

namespace Processing::FXlib::format_conversion::line {

struct access
{
    // Stores go past the caches. Every destination must be 16-byte aligned, and fence_streamed() must follow before
    // another thread may read them.
    bool streaming = false;
    // The source is fetched this many bytes ahead of its use; 0 for one that is in the nearest caches already.
    std::ptrdiff_t ahead = 4096;
};

void fence_streamed();

} // namespace Processing::FXlib::format_conversion::line
