#include "tools/stand_in_host/host_time.h"

#include <cmath>
#include <numeric>

namespace quillo::stand_in {

frame_rate nearest_common_rate(int n, int d)
{
    static constexpr frame_rate common[] = {{24000, 1001}, {24, 1},  {25, 1},  {30000, 1001},
                                            {30, 1},       {48, 1},  {50, 1},  {60, 1},
                                            {60000, 1001}, {100, 1}, {120, 1}, {120000, 1001}};
    double const wanted = static_cast<double>(n) / d;
    for (frame_rate rate : common)
        if (std::abs(wanted * rate.d / rate.n - 1) < 0.00025)
            return rate;
    int const divisor = std::gcd(n, d);
    return {n / divisor, d / divisor};
}

std::int64_t scaled(std::int64_t value, std::int64_t n, std::int64_t d)
{
    __extension__ using wide = __int128;
    wide const doubled = wide{2} * value * n + d;
    wide const divisor = wide{2} * d;
    wide quotient = doubled / divisor;
    if (doubled % divisor < 0)
        --quotient;
    return static_cast<std::int64_t>(quotient);
}

ticks frame_ticks(frame_rate rate) { return scaled(ticks_per_second, rate.d, rate.n); }

double seconds(ticks time) { return static_cast<double>(time) / static_cast<double>(ticks_per_second); }

ticks from_seconds(double time_s) { return std::llround(time_s * static_cast<double>(ticks_per_second)); }

} // namespace quillo::stand_in
