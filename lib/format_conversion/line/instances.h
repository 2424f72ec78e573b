// Explicit instantiation for every combination of flags.
//
//     #define BODY(...) template void reorder::run<here, __VA_ARGS__>(unsigned char const*, ..., access);
//     QUILLO_BODIES(1, BODY)      // one flag after the two of alignment
//     #define KERNEL(...) template void vuyx::uyvy<__VA_ARGS__>(unsigned char const*, unsigned char*, int);
//     QUILLO_KERNELS(0, KERNEL)   // none
//
// A wide processor's bodies are called with unaligned accesses only.
#pragma once

// clang-format off
#define QUILLO_FLAGS_0(make, ...) make(__VA_ARGS__)
#define QUILLO_FLAGS_1(make, ...) QUILLO_FLAGS_0(make, __VA_ARGS__, false) QUILLO_FLAGS_0(make, __VA_ARGS__, true)
#define QUILLO_FLAGS_2(make, ...) QUILLO_FLAGS_1(make, __VA_ARGS__, false) QUILLO_FLAGS_1(make, __VA_ARGS__, true)
#define QUILLO_FLAGS_3(make, ...) QUILLO_FLAGS_2(make, __VA_ARGS__, false) QUILLO_FLAGS_2(make, __VA_ARGS__, true)
#define QUILLO_FLAGS_4(make, ...) QUILLO_FLAGS_3(make, __VA_ARGS__, false) QUILLO_FLAGS_3(make, __VA_ARGS__, true)

#define QUILLO_ALIGNMENTS(n, make) \
    QUILLO_FLAGS_##n(make, false, false) QUILLO_FLAGS_##n(make, false, true) \
    QUILLO_FLAGS_##n(make, true, false) QUILLO_FLAGS_##n(make, true, true)

#define QUILLO_KERNELS(n, make) QUILLO_ALIGNMENTS(n, make)
// With these flags after the two of alignment.
#define QUILLO_KERNELS_WITH(make, ...) \
    make(false, false, __VA_ARGS__) make(false, true, __VA_ARGS__) make(true, false, __VA_ARGS__) make(true, true, __VA_ARGS__)
#if defined(QUILLO_WIDE)
#define QUILLO_BODIES(n, make) QUILLO_FLAGS_##n(make, false, false)
#else
#define QUILLO_BODIES(n, make) QUILLO_ALIGNMENTS(n, make)
#endif
// clang-format on
