#include "tools/stand_in_host/histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace quillo::stand_in {

namespace {

constexpr int step_bits = 4;
constexpr double ms = 1e-6;

int slot_of(std::uint64_t ns)
{
    if (ns < 1u << step_bits)
        return static_cast<int>(ns);
    int const exponent = std::bit_width(ns) - 1 - step_bits;
    return ((exponent + 1) << step_bits) + static_cast<int>((ns >> exponent) & ((1u << step_bits) - 1));
}

// The largest value that falls into the slot.
double slot_top(int slot)
{
    if (slot < 1 << step_bits)
        return slot;
    int const exponent = (slot >> step_bits) - 1;
    return std::ldexp((1 << step_bits) + (slot & ((1 << step_bits) - 1)) + 1, exponent) - 1;
}

} // namespace

void histogram::add(std::chrono::nanoseconds duration)
{
    std::int64_t const ns = std::max<std::int64_t>(duration.count(), 0);
    std::lock_guard const lock(mutex);
    ++counts[static_cast<std::size_t>(slot_of(static_cast<std::uint64_t>(ns)))];
    ++total;
    largest = std::max(largest, ns);
}

long histogram::count() const
{
    std::lock_guard const lock(mutex);
    return total;
}

double histogram::quantile_ms(double share) const
{
    std::lock_guard const lock(mutex);
    long const wanted = std::max(1L, static_cast<long>(std::ceil(share * static_cast<double>(total))));
    long seen = 0;
    for (std::size_t slot = 0; slot < counts.size(); ++slot) {
        seen += counts[slot];
        if (seen >= wanted)
            return std::min(slot_top(static_cast<int>(slot)), static_cast<double>(largest)) * ms;
    }
    return 0;
}

double histogram::max_ms() const
{
    std::lock_guard const lock(mutex);
    return static_cast<double>(largest) * ms;
}

} // namespace quillo::stand_in
