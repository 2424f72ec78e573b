// Random numbers that can be had again: QUILLO_SEED=N gives back the run that printed N.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillo::conversions {

// From QUILLO_SEED, else new for every process; printed at its first use.
std::uint64_t seed();

// splitmix64: small, fast, and the same everywhere.
class random_numbers
{
  public:
    // Independent of the order in which tests run.
    explicit random_numbers(std::string_view purpose);

    std::uint64_t next();
    // 0 .. limit - 1
    int below(int limit);
    bool flip() { return below(2) == 1; }

  private:
    std::uint64_t state_;
};

} // namespace quillo::conversions
