// Takes the place of the plug-in's steady clock in a test program. Passes the real one through until told otherwise.
#pragma once

#include <functional>

namespace quillo::test {

// Set while no clock thread runs; an empty function is the real thing again.
struct fake_steady_time
{
    static std::function<long long()> now_ns;
    static std::function<void(long long)> sleep_ns;
};

} // namespace quillo::test
