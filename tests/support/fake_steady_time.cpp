#include "tests/support/fake_steady_time.h"

#include <chrono>
#include <thread>

#include "Plugins/Plugins.AdobeCC.Transmit/steady_time.h"

namespace quillo::test {

std::function<long long()> fake_steady_time::now_ns;
std::function<void(long long)> fake_steady_time::sleep_ns;

} // namespace quillo::test

namespace quillo::steady_time {

long long now_ns()
{
    if (test::fake_steady_time::now_ns)
        return test::fake_steady_time::now_ns();
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void sleep_ns(long long duration_ns)
{
    if (test::fake_steady_time::sleep_ns)
        test::fake_steady_time::sleep_ns(duration_ns);
    else
        std::this_thread::sleep_for(std::chrono::nanoseconds(duration_ns));
}

} // namespace quillo::steady_time
