#include "sender/open/pacing.h"

#include <algorithm>

namespace quillo::open {

using namespace std::chrono_literals;

namespace {

constexpr int refill_frames = 256; // for one period

}

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
    last_frame = now;
    if (n != rate_n || d != rate_d) {
        rate_n = n;
        rate_d = d;
        start(now);
        return false;
    }
    line.advance(d);
    may_move = std::min(may_move + period() / refill_frames, 2 * period());
    // At less than a frame a second the calls wait shorter than the frames last, and would fall behind for ever.
    if (line.at() - now > 2 * period())
        start(now + period());
    bool const late = now - line.at() > 2 * period();
    if (late)
        start(now);
    return late;
}

void video_clock::start(steady::time_point at)
{
    line.start(at, rate_n);
    may_move = 2 * period();
}

steady::time_point video_clock::wait_until(steady::time_point now)
{
    if (line.at() > now && now - last_frame > period() / 8) {
        auto const move = std::min<steady::duration>(line.at() - now, may_move);
        line.move_earlier(move);
        may_move -= move;
    }
    return std::min(line.at(), now + period());
}

steady::duration video_clock::period() const
{
    if (rate_d >= rate_n)
        return 1s;
    return std::chrono::nanoseconds{std::int64_t{rate_d} * 1'000'000'000 / rate_n};
}

} // namespace quillo::open
