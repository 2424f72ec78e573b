// What is reached without an event to wait for.
#pragma once

#include <chrono>
#include <thread>

namespace quillo::testing {

// True once a condition holds, false if it does not within some seconds.
template <class Condition>
bool soon(Condition holds, std::chrono::milliseconds limit = std::chrono::seconds{5})
{
    auto const until = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > until)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds{5});
    }
    return true;
}

} // namespace quillo::testing
