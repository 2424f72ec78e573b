// Durations in few bytes: counts by size, so that a run of days needs no more than one of seconds.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <mutex>

namespace quillo::stand_in {

// Quantiles are right to 1/16. All functions may be called by any thread.
class histogram
{
  public:
    void add(std::chrono::nanoseconds duration); // negative counts as 0

    long count() const;
    double quantile_ms(double share) const; // 0.5: the median; 0 where nothing was added
    double max_ms() const;

  private:
    static constexpr int steps = 16; // to each doubling

    mutable std::mutex mutex;
    std::array<long, 64 * steps> counts{};
    long total = 0;
    std::int64_t largest = 0;
};

} // namespace quillo::stand_in
