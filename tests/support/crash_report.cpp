#include "tests/support/crash_report.h"

#include "tests/support/seed.h"

#include <csignal>
#include <cstdio>
#include <utility>

namespace quillo::conversions {
namespace {
crash_report const* current = nullptr;
}

crash_report::crash_report(std::function<std::string()> tell) : tell_(std::move(tell)), outer_(current)
{
    current = this;
    [[maybe_unused]] static bool const installed = [] {
        for (int const s : {SIGSEGV, SIGBUS, SIGILL})
            std::signal(s, &crash_report::print);
        return true;
    }();
}

crash_report::~crash_report() { current = outer_; }

void crash_report::print(int signal)
{
    // The process is lost anyway: better a useful line than a safe silence.
    std::signal(signal, SIG_DFL);
    if (current)
        std::fprintf(stderr, "signal %d in: %s, seed %llu\n", signal, current->tell_().c_str(),
                     static_cast<unsigned long long>(seed()));
    std::raise(signal);
}

} // namespace quillo::conversions
