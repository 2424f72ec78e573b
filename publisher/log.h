// Lines on standard error: one event a line, never one a frame, as text or as JSON. What is said over and over from one
// place is cut short, with the number of lines that were left out.
#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace quillo::log {

enum class level { error, warning, notice, info, debug };

inline constexpr char const* allowed_levels = "error, warning, notice, info, debug";

std::optional<level> parse_level(std::string_view name);

void set_level(level most_verbose);
void set_json(bool lines_are_json);
bool enabled(level of_line);

// A place in the sources. Clang 14 has no std::source_location with GCC's library.
class origin
{
  public:
    origin(char const* file, unsigned line) : file_(file), line_(line) {}
    char const* file_name() const { return file_; }
    unsigned line() const { return line_; }

  private:
    char const* file_;
    unsigned line_;
};

// The first part of a line, which also tells where the line is written.
class opening
{
  public:
    template <class Part>
    opening(Part const& part, char const* file = __builtin_FILE(), unsigned line = __builtin_LINE())
        : at_(file, line), part_(&part),
          print_([](std::ostream& out, void const* what) { out << *static_cast<Part const*>(what); })
    {
    }

    origin const& at() const { return at_; }
    friend std::ostream& operator<<(std::ostream& out, opening const& first)
    {
        first.print_(out, first.part_);
        return out;
    }

  private:
    origin at_;
    void const* part_;
    void (*print_)(std::ostream&, void const*);
};

// Tells what has been left out so far; for the end.
void flush();

void write(level of_line, std::string const& text, origin const& at = {__builtin_FILE(), __builtin_LINE()});

template <class... Parts>
void line(level of_line, opening const& first, Parts const&... rest)
{
    if (!enabled(of_line))
        return;
    std::ostringstream text;
    text << first;
    ((text << rest), ...);
    write(of_line, text.str(), first.at());
}

// Something is not done that was asked for.
template <class... Parts>
void error(opening const& first, Parts const&... rest)
{
    line(level::error, first, rest...);
}
// Something goes on worse than it could, and somebody can do something about it.
template <class... Parts>
void warning(opening const& first, Parts const&... rest)
{
    line(level::warning, first, rest...);
}
// Rare and important, and as it should be.
template <class... Parts>
void notice(opening const& first, Parts const&... rest)
{
    line(level::notice, first, rest...);
}
// The course of things: sources and receivers that come and go.
template <class... Parts>
void info(opening const& first, Parts const&... rest)
{
    line(level::info, first, rest...);
}
// For whoever looks for a mistake.
template <class... Parts>
void debug(opening const& first, Parts const&... rest)
{
    line(level::debug, first, rest...);
}

} // namespace quillo::log
