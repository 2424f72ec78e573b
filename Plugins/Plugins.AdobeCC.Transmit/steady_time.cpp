#include "Plugins/Plugins.AdobeCC.Transmit/steady_time.h"

#include <chrono>
#include <thread>

namespace quillo::steady_time {

using std::chrono::nanoseconds;

long long now_ns()
{
    return std::chrono::duration_cast<nanoseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void sleep_ns(long long duration_ns) { std::this_thread::sleep_for(nanoseconds(duration_ns)); }

} // namespace quillo::steady_time
