#include "sender/open/log.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

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

void log::write(log_level level, std::string_view line, std::string_view more) const noexcept
{
    if (level > most)
        return;
    pollfd stream{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&stream, 1, 0) != 1 || !(stream.revents & POLLOUT))
        return;
    std::array<char, 1000> text;
    std::size_t size = 0;
    for (std::string_view part :
         {std::string_view{"quillo: "}, std::string_view{name}, std::string_view{": "}, line, more}) {
        part = part.substr(0, text.size() - 1 - size);
        std::copy(part.begin(), part.end(), text.begin() + static_cast<std::ptrdiff_t>(size));
        size += part.size();
    }
    text[size++] = '\n';
    // The calling thread has SIGPIPE blocked, so a closed stream does no harm.
    [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), size);
}

} // namespace quillo::open
