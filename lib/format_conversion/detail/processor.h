// Which build of the kernels runs on this processor, chosen at the first use, and from which size on stores go past the
// caches. The same for the life of the process unless a test or a benchmark forces another.
#pragma once

#include <limits>
#include <vector>

namespace Processing::FXlib::format_conversion::detail {

enum class processor { ssse3, avx2, avx512 };

// Those that this machine can run, the narrowest first.
std::vector<processor> variants();
char const* name(processor);

processor chosen();

// Makes every later conversion use p, which must be one of variants(). Not while a conversion runs.
void force(processor p);

// Targets of this many bytes together do not stay in the caches until they are read, so where it is faster their lines
// are not fetched either. A 1080p pair of buffers still fits.
inline constexpr long long streaming_bytes = 12'000'000;
inline constexpr long long streaming_never = std::numeric_limits<long long>::max();
// Which of the two goes here, unless another size is forced. 0 streams everything that is aligned for it.
long long streaming_from();
void force_streaming_from(long long bytes);

// Whether lines that may be converted in any order go by rising addresses of a source that is stored bottom-up, instead
// of by those of its targets.
bool in_source_order();
void force_source_order(bool);

// Whether the string instructions are the fastest way to copy and to fill.
bool fast_strings();
void force_fast_strings(bool);
extern bool strings_are_fast;

// Back to the machine's best.
void unforce();

// The variant whose code ran last, on whichever thread; each kernel reports itself. Where avx512 is chosen, kernels
// that gain nothing from it (Kernel::widest) run avx2.
processor last_ran();
extern int last_reported;

} // namespace Processing::FXlib::format_conversion::detail
