// A copy of a picture that several threads may work on at once, so that whoever needs its end can hasten it: on a busy
// machine the thread that began may have lost the processor.
#pragma once

#include "sender/open/records.h"

#include <algorithm>
#include <atomic>
#include <cstddef>

namespace quillo::open {

class shared_copy
{
  public:
    // to has room for from.bytes().
    shared_copy(picture const& from, std::byte* to)
        : source(from), target(to), lines(static_cast<std::size_t>(from.format.height)),
          band(std::max<std::size_t>(1, band_bytes / from.row_bytes))
    {
    }

    // Copies bands of lines as long as there are any that nobody has taken. The copy has ended when every call has.
    void work()
    {
        for (std::size_t first; (first = next.fetch_add(band, std::memory_order_relaxed)) < lines;)
            source.copy_lines(target, first, std::min(band, lines - first));
    }

  private:
    static constexpr std::size_t band_bytes = 256 * 1024; // some tens of microseconds

    picture const source;
    std::byte* const target;
    std::size_t const lines;
    std::size_t const band;
    std::atomic<std::size_t> next{0};
};

} // namespace quillo::open
