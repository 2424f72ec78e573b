#include "sender/open/log.h"

#include <poll.h>
#include <unistd.h>

namespace quillo::open {

log_level read_log_level(char const* text)
{
    std::string_view const wanted{text ? text : ""};
    if (wanted == "off")
        return log_level::off;
    if (wanted == "error")
        return log_level::error;
    if (wanted == "info")
        return log_level::info;
    if (wanted == "debug")
        return log_level::debug;
    return log_level::warning;
}

log::log(log_level level, std::string source_name) : most(level), name(std::move(source_name)) {}

void log::write(log_level level, std::string_view line) const
{
    if (level > most)
        return;
    pollfd stream{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&stream, 1, 0) != 1 || !(stream.revents & POLLOUT))
        return;
    std::string text = "quillo: " + name + ": ";
    text += line;
    text += '\n';
    // The calling thread has SIGPIPE blocked, so a closed stream does no harm.
    [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace quillo::open
