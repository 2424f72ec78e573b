#include "publisher/log.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace quillo::log {

namespace {

constexpr std::array<std::string_view, 5> names{"error", "warning", "info", "debug", "trace"};
std::atomic<level> most_verbose_level{level::info};

} // namespace

std::optional<level> parse_level(std::string_view name)
{
    for (std::size_t k = 0; k < names.size(); ++k)
        if (names[k] == name)
            return static_cast<level>(k);
    return std::nullopt;
}

void set_level(level most_verbose) { most_verbose_level = most_verbose; }

bool enabled(level of_line) { return of_line <= most_verbose_level.load(); }

void write(level of_line, std::string const& text)
{
    auto const now = std::chrono::system_clock::now();
    auto const seconds = std::chrono::system_clock::to_time_t(now);
    auto const milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%H:%M:%S", &local);
    // One call, so that lines of several threads and processes do not mix.
    std::fprintf(stderr, "%s.%03d quillo %.*s: %s\n", stamp, static_cast<int>(milliseconds),
                 static_cast<int>(names[static_cast<std::size_t>(of_line)].size()),
                 names[static_cast<std::size_t>(of_line)].data(), text.c_str());
}

} // namespace quillo::log
