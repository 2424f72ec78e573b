// Which build of the kernels runs on this processor. Chosen at the first use, the same for the life of the process
// unless a test or a benchmark forces another.
#pragma once

#include <vector>

namespace Processing::FXlib::format_conversion::detail {

enum class processor { ssse3, avx2, avx512 };

// Those that this machine can run, the narrowest first.
std::vector<processor> variants();
char const* name(processor);

processor chosen();

// Makes every later conversion use p, which must be one of variants(). Not while a conversion runs.
void force(processor p);
// Back to the machine's best.
void unforce();

// The variant whose code ran last, on whichever thread; each kernel reports itself. Where avx512 is chosen, kernels
// that gain nothing from it (Kernel::widest) run avx2.
processor last_ran();
void note_ran(processor);

// Whether the string move instructions are the fastest copy.
bool has_fast_strings();

} // namespace Processing::FXlib::format_conversion::detail
