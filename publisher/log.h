// Lines on standard error: one event a line, never one a frame.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace quillo::log {

enum class level { error, warning, info, debug, trace };

std::optional<level> parse_level(std::string_view name);

void set_level(level most_verbose);
bool enabled(level of_line);
void write(level of_line, std::string const& text);

template <class... Parts>
void line(level of_line, Parts const&... parts)
{
    if (!enabled(of_line))
        return;
    std::ostringstream text;
    (text << ... << parts);
    write(of_line, text.str());
}

template <class... Parts>
void error(Parts const&... parts)
{
    line(level::error, parts...);
}
template <class... Parts>
void warning(Parts const&... parts)
{
    line(level::warning, parts...);
}
template <class... Parts>
void info(Parts const&... parts)
{
    line(level::info, parts...);
}
template <class... Parts>
void debug(Parts const&... parts)
{
    line(level::debug, parts...);
}
template <class... Parts>
void trace(Parts const&... parts)
{
    line(level::trace, parts...);
}

} // namespace quillo::log
