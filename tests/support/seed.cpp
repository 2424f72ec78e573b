#include "tests/support/seed.h"

#include <cstdlib>
#include <iostream>
#include <random>

namespace quillo::conversions {

std::uint64_t seed()
{
    static std::uint64_t const chosen = [] {
        char const* const given = std::getenv("QUILLO_SEED");
        std::uint64_t const value = given ? std::strtoull(given, nullptr, 0) : std::random_device{}();
        std::cout << "seed " << value << " (QUILLO_SEED=" << value << " repeats this run)" << std::endl;
        return value;
    }();
    return chosen;
}

random_numbers::random_numbers(std::string_view purpose) : state_(seed())
{
    for (char const c : purpose)
        state_ = (state_ ^ static_cast<unsigned char>(c)) * 0x100000001b3;
}

std::uint64_t random_numbers::next()
{
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

int random_numbers::below(int limit) { return static_cast<int>(next() % static_cast<unsigned>(limit)); }

} // namespace quillo::conversions
