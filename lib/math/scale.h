// Rescaling of times between clocks.
#pragma once

namespace Processing::Quillo::Plugins::Lib::math {

// a * b / c with c / 2 added before dividing. Large a is split, a = q * c + r, so that a * b need not fit 64 bits; a
// result that does not fit wraps. c must not be 0. The signed form adds the half whatever the sign and truncates
// towards zero, so it is not symmetric about zero.
unsigned long long scale(unsigned long long a, unsigned int b, unsigned int c);
long long scale(long long a, int b, int c);

} // namespace Processing::Quillo::Plugins::Lib::math
