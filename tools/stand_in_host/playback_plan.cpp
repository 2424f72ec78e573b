#include "tools/stand_in_host/playback_plan.h"

#include <algorithm>
#include <cmath>

namespace quillo::stand_in {

namespace {

// Always in 0 .. length - 1.
template <typename T>
T wrapped(T value, T length)
{
    T const rest = value % length;
    return rest < 0 ? rest + length : rest;
}

} // namespace

std::optional<std::int64_t> playback_plan::frame(std::int64_t push) const
{
    auto const distance =
        static_cast<std::int64_t>(std::floor(static_cast<double>(push) * std::max(std::abs(speed), 1.0)));
    std::int64_t const number = speed > 0 ? first + distance : first - distance;
    if (loop)
        return in + wrapped(number - in, out - in);
    return number >= in && number < out ? std::optional(number) : std::nullopt;
}

ticks playback_plan::due(std::int64_t push) const
{
    double const slow = std::min(std::abs(speed), 1.0);
    return slow == 1.0 ? push * frame_length : std::llround(static_cast<double>(push * frame_length) / slow);
}

std::int64_t playback_plan::newest_due(ticks elapsed) const
{
    double const slow = std::min(std::abs(speed), 1.0);
    auto push =
        slow == 1.0
            ? elapsed / frame_length
            : static_cast<std::int64_t>(static_cast<double>(elapsed) * slow / static_cast<double>(frame_length));
    while (due(push + 1) <= elapsed)
        ++push;
    while (push > 0 && due(push) > elapsed)
        --push;
    return push;
}

std::optional<ticks> playback_plan::position(ticks elapsed) const
{
    ticks const moved = speed == 1 ? elapsed : std::llround(static_cast<double>(elapsed) * speed);
    ticks const place = start_time() + moved;
    ticks const begin = time_of(in);
    ticks const end = time_of(out);
    if (loop)
        return begin + wrapped(place - begin, end - begin);
    return place >= begin && place < end + (speed < 0 ? 1 : 0) ? std::optional(place) : std::nullopt;
}

ticks playback_plan::next_break(ticks elapsed) const
{
    double const rate = std::abs(speed);
    ticks const to_first_break = speed > 0 ? time_of(out) - start_time() : start_time() - time_of(in);
    ticks const length = time_of(out) - time_of(in);
    ticks distance = to_first_break;
    auto when = [rate](ticks d) { return rate == 1 ? d : std::llround(static_cast<double>(d) / rate); };
    if (!loop)
        return when(distance);
    if (when(distance) <= elapsed)
        distance += length * ((static_cast<ticks>(static_cast<double>(elapsed) * rate) - distance) / length);
    while (when(distance) <= elapsed)
        distance += length;
    return when(distance);
}

} // namespace quillo::stand_in
