#include "lib/format_conversion/detail/processor.h"

#include <atomic>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace Processing::FXlib::format_conversion::detail {

namespace {

bool can_run(processor p)
{
#if defined(__x86_64__)
    __builtin_cpu_init();
    switch (p) {
    case processor::ssse3:
        return true;
    case processor::avx2:
        return __builtin_cpu_supports("avx2");
    case processor::avx512:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("avx512f") &&
               __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
               __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
    }
    return false;
#else
    return p == processor::ssse3;
#endif
}

std::atomic<processor>& choice()
{
    static std::atomic<processor> current{variants().back()};
    return current;
}

bool ask_for_maker()
{
#if defined(__x86_64__)
    unsigned highest = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(0, &highest, &b, &c, &d) != 0 && b == signature_AMD_ebx;
#else
    return false;
#endif
}

// Asked once: a virtual machine takes some microseconds for the instruction, tests ask for each picture.
bool is_by_amd()
{
    static bool const answer = ask_for_maker();
    return answer;
}

// AMD's processors gain up to a third by it, Intel's lose up to a quarter: a core of theirs has few of the buffers that
// such stores wait in.
long long best_streaming_from() { return is_by_amd() ? streaming_bytes : streaming_never; }

std::atomic<long long>& streaming_threshold()
{
    static std::atomic<long long> current{best_streaming_from()};
    return current;
}

// AMD's processors read ahead in rising addresses only. Intel's do so either way, and write in rising ones up to a
// quarter faster.
std::atomic<bool>& source_order()
{
    static std::atomic<bool> current{is_by_amd()};
    return current;
}

bool is_quick_with_strings()
{
#if defined(__x86_64__)
    unsigned a = 0, b = 0, c = 0, d = 0;
    // Those that are quick with short strings. The older promise for long ones alone is not kept by all.
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (d & (1u << 4)) != 0;
#else
    return false;
#endif
}

bool const has_fast_strings = is_quick_with_strings();

} // namespace

// Not yet known to conversions before main(), which are only slower for it.
bool strings_are_fast = has_fast_strings;

int last_reported = 0;

std::vector<processor> variants()
{
    std::vector<processor> found;
    for (processor const p : {processor::ssse3, processor::avx2, processor::avx512})
        if (can_run(p))
            found.push_back(p);
    return found;
}

char const* name(processor p)
{
    switch (p) {
    case processor::ssse3:
        return "ssse3";
    case processor::avx2:
        return "avx2";
    case processor::avx512:
        return "avx512";
    }
    return "unknown";
}

processor chosen() { return choice().load(std::memory_order_relaxed); }

void force(processor p) { choice().store(p, std::memory_order_relaxed); }

long long streaming_from() { return streaming_threshold().load(std::memory_order_relaxed); }

void force_streaming_from(long long bytes) { streaming_threshold().store(bytes, std::memory_order_relaxed); }

bool in_source_order() { return source_order().load(std::memory_order_relaxed); }

void force_source_order(bool in_order) { source_order().store(in_order, std::memory_order_relaxed); }

bool fast_strings() { return __atomic_load_n(&strings_are_fast, __ATOMIC_RELAXED); }

void force_fast_strings(bool fast) { __atomic_store_n(&strings_are_fast, fast, __ATOMIC_RELAXED); }

void unforce()
{
    force(variants().back());
    force_streaming_from(best_streaming_from());
    force_source_order(is_by_amd());
    force_fast_strings(has_fast_strings);
}

processor last_ran() { return static_cast<processor>(__atomic_load_n(&last_reported, __ATOMIC_RELAXED)); }

} // namespace Processing::FXlib::format_conversion::detail
