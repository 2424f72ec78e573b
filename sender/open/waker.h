// Wakes a thread that waits in poll().
#pragma once

#include "sender/open/descriptor.h"

namespace quillo::open {

class waker
{
  public:
    // Throws std::system_error when the system has no descriptors left.
    waker();

    // From any thread; never blocks.
    void wake() noexcept;

    // To poll for input, and to be emptied once it is there.
    int fd() const { return reading.get(); }
    void drain() noexcept;

  private:
    descriptor reading;
    descriptor writing;
};

} // namespace quillo::open
