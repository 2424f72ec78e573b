#include "sender/open/waker.h"

#include "sender/open/system_call.h"

#include <array>

namespace quillo::open {

waker::waker()
{
    auto ends = make_pipe();
    reading = std::move(ends[0]);
    writing = std::move(ends[1]);
}

void waker::wake() noexcept
{
    char const any = 0;
    // A full pipe wakes as well.
    while (::write(writing.get(), &any, 1) < 0 && errno == EINTR) {
    }
}

void waker::drain() noexcept
{
    std::array<char, 64> taken;
    while (::read(reading.get(), taken.data(), taken.size()) == static_cast<ssize_t>(taken.size())) {
    }
}

} // namespace quillo::open
