#include "sender/open/waker.h"

#include "sender/open/system_call.h"

#include <array>

namespace quillo::open {

waker::waker()
{
    std::array<int, 2> ends{};
    check_call(::pipe(ends.data()), "pipe");
    reading = descriptor{ends[0]};
    writing = descriptor{ends[1]};
    for (int const end : ends)
        set_private_and_nonblocking(end);
}

void waker::wake() noexcept
{
    char const any = 0;
    // A full pipe wakes as well.
    [[maybe_unused]] auto const written = ::write(writing.get(), &any, 1);
}

void waker::drain() noexcept
{
    std::array<char, 64> taken;
    while (::read(reading.get(), taken.data(), taken.size()) == static_cast<ssize_t>(taken.size())) {
    }
}

} // namespace quillo::open
