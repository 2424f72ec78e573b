// The probe module's functions, plain C so that the test can look them up.
#pragma once

#define PROBE_API extern "C" __attribute__((visibility("default")))

PROBE_API int probe_constructed();
PROBE_API int probe_static_guard();
PROBE_API int probe_catch_inside(int depth);
PROBE_API int probe_catch_through_large_frame();
PROBE_API int probe_catch_through_odd_frame();
PROBE_API int probe_call_host(int (*function)(int), int value, int* unwound);
PROBE_API void probe_throw_out(char const* text);
PROBE_API int probe_threads(int count);
PROBE_API long long probe_slept_ns(int milliseconds);
PROBE_API int probe_grow(int bytes);
PROBE_API void probe_print(char const* text);
PROBE_API int probe_system(char const* command);
PROBE_API int probe_formatted(char const* text, int value);
