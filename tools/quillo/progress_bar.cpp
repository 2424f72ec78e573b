#include "tools/quillo/progress_bar.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace quillo {

namespace {

constexpr int bar_width = 40;
constexpr std::int64_t interval_ns = 100'000'000;

std::int64_t now_ns()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

progress_bar::progress_bar(std::int64_t total)
    : total_(total), next_ns_(now_ns() + interval_ns), on_terminal_(isatty(STDERR_FILENO) == 1)
{
}

void progress_bar::show(std::int64_t done)
{
    if (!on_terminal_ || total_ <= 0 || now_ns() < next_ns_)
        return;
    next_ns_ = now_ns() + interval_ns;
    drawn_ = true;
    auto const filled = static_cast<std::size_t>(done * bar_width / total_);
    std::string const bar = std::string(filled, '#') + std::string(bar_width - filled, '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(done * 100 / total_));
    std::fflush(stderr);
}

void progress_bar::finish()
{
    if (drawn_)
        std::fputs("\r\033[K", stderr);
}

} // namespace quillo
