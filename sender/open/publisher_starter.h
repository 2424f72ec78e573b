// Starts the publisher when nobody listens.
#pragma once

#include "sender/open/pacing.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillo::open {

// When another start may be tried, so that a publisher that cannot live is not started over and over.
class start_limit
{
  public:
    bool may_start(steady::time_point now) const { return now >= allowed; }
    void started(steady::time_point now);
    // A publisher answered: when it is lost, the next start need not wait long.
    void answered(steady::time_point now);
    void lost(steady::time_point now);

  private:
    steady::time_point allowed = steady::time_point::min();
    steady::time_point last_start;
    steady::time_point last_answer;
    steady::duration patience = shortest; // with the publisher started next

    static constexpr std::chrono::seconds shortest{3};
    static constexpr std::chrono::seconds longest{30};
};

// The environment as it was when the sender was made: the host may change it later beside our thread.
struct start_environment
{
    std::vector<std::string> variables; // NAME=VALUE

    static start_environment of_this_process();
    // Null when it is not there.
    char const* get(std::string_view name) const;
};

// The program to start: $QUILLO_PUBLISHER, an empty value meaning none; else quillo beside this library, in the
// neighbouring bin folder, in the build tree that the library is in, or in $PATH.
std::optional<std::string> find_publisher(start_environment const&);

// Starts "PROGRAM serve --on-demand" in a session of its own: no child of this process, with none of its descriptors
// and signal settings. Its messages go to publisher.log in the folder. Throws std::system_error when that cannot be
// done.
void start_publisher(std::string const& program, std::string const& folder, start_environment const&);

} // namespace quillo::open
