#include "sender/open/pacing.h"

#include <algorithm>

namespace quillo::open {

using namespace std::chrono_literals;

void timeline::start(steady::time_point at, std::int64_t units_a_second)
{
    whole = at;
    units = 0;
    per_second = units_a_second;
}

void timeline::advance(std::int64_t more)
{
    units += more;
    whole += std::chrono::seconds{units / per_second};
    units %= per_second;
}

steady::time_point timeline::at() const
{
    // units < per_second < 2^32, so the product stays below 2^62.
    return whole + std::chrono::nanoseconds{units * 1'000'000'000 / per_second};
}

audio_clock::block audio_clock::next(steady::time_point now, int rate, int samples)
{
    bool const late = rate == current_rate && now - line.at() > 100ms;
    if (late || rate != current_rate) {
        line.start(now, rate);
        current_rate = rate;
    }
    auto const begin = line.at();
    line.advance(samples);
    return {begin, line.at(), late};
}

bool video_clock::frame(steady::time_point now, std::int32_t n, std::int32_t d)
{
    if (n == rate_n && d == rate_d) {
        line.advance(d);
        // At less than a frame a second the calls wait shorter than the frames last, and would fall behind for ever.
        if (line.at() - now > 2 * period())
            line.start(now + period(), n);
        if (now - line.at() <= 2 * period())
            return false;
        line.start(now, n);
        return true;
    }
    rate_n = n;
    rate_d = d;
    line.start(now, n);
    return false;
}

steady::time_point video_clock::wait_until(steady::time_point now) const { return std::min(line.at(), now + period()); }

steady::duration video_clock::period() const
{
    if (rate_d >= rate_n)
        return 1s;
    return std::chrono::nanoseconds{std::int64_t{rate_d} * 1'000'000'000 / rate_n};
}

} // namespace quillo::open
