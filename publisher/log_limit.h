// How often one place may speak.
#pragma once

#include "publisher/log.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quillo::log {

// Ten lines in ten seconds from one place in the sources, then silence until they are over. Not thread-safe.
class limit
{
  public:
    using steady = std::chrono::steady_clock;
    using place = std::pair<char const*, std::uint_least32_t>; // file and line

    static constexpr int lines = 10;
    static constexpr std::chrono::seconds window{10};

    bool allows(place from, level of_line, std::string const& text, steady::time_point now);

    struct silenced
    {
        level of_lines;
        std::uint64_t lines;
        std::string last; // of them
    };
    // What was left out at places whose time is over, or at all places; told once.
    std::vector<silenced> take_silenced(steady::time_point now, bool all = false);

  private:
    struct count
    {
        steady::time_point since;
        int written = 0;
        std::uint64_t left_out = 0;
        level of_lines = level::info;
        std::string last{};
    };
    std::map<place, count> places_;
};

} // namespace quillo::log
