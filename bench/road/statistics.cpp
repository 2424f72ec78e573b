#include "bench/road/statistics.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>

namespace quillo::bench {

namespace {

std::int64_t clock_ns(clockid_t id)
{
    timespec t{};
    clock_gettime(id, &t);
    return t.tv_sec * 1000000000LL + t.tv_nsec;
}

} // namespace

std::int64_t monotonic_ns() { return clock_ns(CLOCK_MONOTONIC); }

double thread_cpu_s() { return static_cast<double>(clock_ns(CLOCK_THREAD_CPUTIME_ID)) / 1e9; }

double process_cpu_s() { return static_cast<double>(clock_ns(CLOCK_PROCESS_CPUTIME_ID)) / 1e9; }

double process_cpu_s(pid_t pid)
{
    clockid_t id{};
    return clock_getcpuclockid(pid, &id) == 0 ? static_cast<double>(clock_ns(id)) / 1e9 : 0;
}

std::int64_t resident_kb(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/statm");
    std::int64_t size = 0, resident = 0;
    file >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

nlohmann::json summary(std::vector<double> values)
{
    if (values.empty())
        return nullptr;
    std::sort(values.begin(), values.end());
    auto const at = [&](double share) {
        return values[std::min(values.size() - 1,
                               static_cast<std::size_t>(share * static_cast<double>(values.size())))];
    };
    return {{"p50", at(0.5)}, {"p99", at(0.99)}, {"max", values.back()}};
}

} // namespace quillo::bench
