// Messages to the standard error stream, as far as the variable QUILLO_LOG asks for them.
#pragma once

#include <string>
#include <string_view>

namespace quillo::open {

enum class log_level { off, error, warning, info, debug };

// "off", "error", "warning", "info", "debug"; anything else is the default, warning.
log_level read_log_level(char const* text);

// One for each sender; used by its hand-over thread only.
class log
{
  public:
    log(log_level, std::string source_name);

    // A line of its own, cut after 1000 bytes. Never blocks: it is lost when nobody reads the stream. Needs no memory.
    void write(log_level, std::string_view line, std::string_view more = {}) const noexcept;

  private:
    log_level const most;
    std::string const name;
};

} // namespace quillo::open
