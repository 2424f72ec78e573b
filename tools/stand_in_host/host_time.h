// Frame rates and the host's time, counted in ticks.
#pragma once

#include <cstdint>

namespace quillo::stand_in {

using ticks = long long; // the host's PrTime

constexpr ticks ticks_per_second = 254016000000;

struct frame_rate
{
    int n = 0; // frames in
    int d = 1; // seconds

    friend bool operator==(frame_rate const&, frame_rate const&) = default;
};

// The common rate within 0.025 % of n / d, or n / d as it is. Files often state 23.98 or 2997/100 for a common rate.
frame_rate nearest_common_rate(int n, int d);

// value * n / d, rounded to nearest, halves up; the product may exceed 64 bits. d > 0.
std::int64_t scaled(std::int64_t value, std::int64_t n, std::int64_t d);

// The length of one frame. The host's timeline counts in whole multiples of it.
ticks frame_ticks(frame_rate rate);

double seconds(ticks time);
ticks from_seconds(double time_s);

} // namespace quillo::stand_in
