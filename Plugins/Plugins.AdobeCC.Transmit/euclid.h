// Euclid's algorithm, for the exported function and for the time scale of an instance.
#pragma once

namespace quillo {

constexpr long long euclid(long long a, long long b)
{
    while (b != 0) {
        long long const remainder = a % b;
        a = b;
        b = remainder;
    }
    return a;
}

} // namespace quillo
