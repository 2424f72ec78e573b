// Clocks and percentiles of the road benchmark.
#pragma once

#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <cstdint>
#include <vector>

namespace quillo::bench {

std::int64_t monotonic_ns();
double thread_cpu_s();
double process_cpu_s();
double process_cpu_s(pid_t pid);     // 0 if there is no such process
std::int64_t resident_kb(pid_t pid); // 0 if there is no such process

// {"p50", "p99", "max"}, in the unit of the values; null without values.
nlohmann::json summary(std::vector<double> values);

} // namespace quillo::bench
