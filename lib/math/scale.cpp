#include "lib/math/scale.h"

namespace Processing::Quillo::Plugins::Lib::math {

namespace {

// Unsigned multiplication and addition wrap, whatever the sign that the caller means.
long long wrapping_product_sum(long long a, long long b, long long c)
{
    using u64 = unsigned long long;
    return static_cast<long long>(static_cast<u64>(a) * static_cast<u64>(b) + static_cast<u64>(c));
}

} // namespace

unsigned long long scale(unsigned long long a, unsigned int b, unsigned int c)
{
    unsigned long long const half = c / 2;
    if (a < 1ull << 32)
        return (a * b + half) / c;
    return (a / c) * b + ((a % c) * b + half) / c;
}

long long scale(long long a, int b, int c)
{
    long long const half = c / 2;
    // Every negative a takes the short road too.
    if (a <= 0x7FFFFFFF)
        return wrapping_product_sum(a, b, half) / c;
    return wrapping_product_sum(a / c, b, wrapping_product_sum(a % c, b, half) / c);
}

} // namespace Processing::Quillo::Plugins::Lib::math
