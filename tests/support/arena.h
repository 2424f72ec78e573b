// Memory between two unreadable pages: whoever reads or writes past either end is stopped at once.
#pragma once

#include <cstddef>

namespace quillo::conversions {

class arena
{
  public:
    // At least bytes; begin() and end() lie on page borders.
    explicit arena(std::size_t bytes);
    ~arena();
    arena(arena const&) = delete;
    arena& operator=(arena const&) = delete;

    unsigned char* begin() const { return begin_; }
    unsigned char* end() const { return begin_ + size_; }

  private:
    unsigned char* begin_;
    std::size_t size_;
};

} // namespace quillo::conversions
