// What the compiler's own runtime library does for __builtin_cpu_supports; on a Mac it comes with the compiler.
// The features' bit numbers are part of the compiler's interface.
#ifdef __x86_64__

#include <cpuid.h>

namespace {

enum feature : unsigned {
    ssse3 = 6,
    sse4_1 = 7,
    avx = 9,
    avx2 = 10,
    avx512f = 15,
    avx512vl = 20,
    avx512bw = 21,
    avx512vbmi = 26,
    avx512vnni = 34
};

bool bit(unsigned word, unsigned number) { return (word >> number & 1) != 0; }

} // namespace

extern "C" {

__attribute__((visibility("hidden"))) struct
{
    unsigned vendor, type, subtype, features;
} __cpu_model;
__attribute__((visibility("hidden"))) unsigned __cpu_features2;

__attribute__((visibility("hidden"))) int __cpu_indicator_init()
{
    if (__cpu_model.vendor != 0)
        return 0;
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0)
        return -1;

    unsigned features = 0;
    unsigned features2 = 0;
    auto const set = [&](feature number, bool there) {
        if (there)
            (number < 32 ? features : features2) |= 1u << number % 32;
    };
    set(ssse3, bit(ecx, 9));
    set(sse4_1, bit(ecx, 19));

    // The wide registers count only where the system saves them. macOS saves those of AVX-512 from their first use on,
    // so what XCR0 says of them does not count.
    unsigned saved = 0;
    if (bit(ecx, 27))
        __asm__("xgetbv" : "=a"(saved), "=d"(edx) : "c"(0));
    bool const wide = bit(ecx, 28) && (saved & 6) == 6;
    set(avx, wide);
    if (wide && __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) {
        set(avx2, bit(ebx, 5));
        set(avx512f, bit(ebx, 16));
        set(avx512bw, bit(ebx, 30));
        set(avx512vl, bit(ebx, 31));
        set(avx512vbmi, bit(ecx, 1));
        set(avx512vnni, bit(ecx, 11));
    }
    __cpu_features2 = features2;
    __cpu_model.features = features;
    __cpu_model.vendor = 3; // "other": nobody asks
    return 0;
}
}

#endif
