#include "publisher/log.h"

#include "publisher/log_limit.h"

#include <nlohmann/json.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

namespace quillo::log {

namespace {

constexpr std::array<char const*, 5> names{"error", "warning", "notice", "info", "debug"};
std::atomic<level> most_verbose_level{level::info};
std::atomic<bool> as_json{false};

std::mutex one_at_a_time;
// With the lock. Never destroyed: threads of libraries may speak until the process is gone.
limit& places()
{
    static limit& all = *new limit;
    return all;
}

std::string with_milliseconds(std::chrono::system_clock::time_point now, std::string seconds)
{
    auto const part = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    char milliseconds[8];
    std::snprintf(milliseconds, sizeof milliseconds, ".%03d", static_cast<int>(part));
    return seconds + milliseconds;
}

std::string local_time(std::chrono::system_clock::time_point now)
{
    auto const seconds = std::chrono::system_clock::to_time_t(now);
    std::tm broken{};
    localtime_r(&seconds, &broken);
    char text[32];
    std::strftime(text, sizeof text, "%H:%M:%S", &broken);
    return with_milliseconds(now, text);
}

std::string utc(std::chrono::system_clock::time_point now)
{
    auto const seconds = std::chrono::system_clock::to_time_t(now);
    std::tm broken{};
    gmtime_r(&seconds, &broken);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &broken);
    return with_milliseconds(now, text) + "Z";
}

// Names and user agents come from the network: no line of theirs shall look like one of ours.
std::string on_one_line(std::string text)
{
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F)
            c = '?';
    return text;
}

void put(level of_line, std::string const& text, origin const& at)
{
    char const* const name = names[static_cast<std::size_t>(of_line)];
    auto const now = std::chrono::system_clock::now();
    std::string line;
    if (as_json) {
        char const* const slash = std::strrchr(at.file_name(), '/');
        nlohmann::ordered_json const fields = {
            {"time", utc(now)},
            {"level", name},
            {"message", text},
            {"at", std::string{slash ? slash + 1 : at.file_name()} + ":" + std::to_string(at.line())}};
        line = fields.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    } else {
        line = local_time(now) + " quillo " + name + ": " + on_one_line(text);
    }
    line += '\n';
    // One call, so that lines of several threads and processes do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void put(limit::silenced const& silenced)
{
    put(silenced.of_lines, "suppressed " + std::to_string(silenced.lines) + " lines, the last: " + silenced.last,
        {__builtin_FILE(), __builtin_LINE()});
}

} // namespace

std::optional<level> parse_level(std::string_view name)
{
    for (std::size_t k = 0; k < names.size(); ++k)
        if (names[k] == name)
            return static_cast<level>(k);
    return std::nullopt;
}

void set_level(level most_verbose) { most_verbose_level = most_verbose; }

void set_json(bool lines_are_json) { as_json = lines_are_json; }

bool enabled(level of_line) { return of_line <= most_verbose_level.load(); }

void write(level of_line, std::string const& text, origin const& at)
{
    auto const now = limit::steady::now();
    std::lock_guard const lock{one_at_a_time};
    for (auto const& silenced : places().take_silenced(now))
        put(silenced);
    if (places().allows({at.file_name(), at.line()}, of_line, text, now))
        put(of_line, text, at);
}

void flush()
{
    std::lock_guard const lock{one_at_a_time};
    for (auto const& silenced : places().take_silenced(limit::steady::now(), true))
        put(silenced);
}

} // namespace quillo::log
