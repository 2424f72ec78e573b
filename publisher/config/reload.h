// The configuration of a running publisher: read at the start, and again whenever the file changes.
#pragma once

#include "publisher/config/configuration.h"
#include "publisher/config/watcher.h"

#include <functional>
#include <memory>
#include <string>

namespace quillo::publisher {

// Where a configuration comes from: what is said on the command line goes before the file, the file before defaults.
struct configuration_source
{
    std::string file;                                   // empty: the default one, which need not be there
    std::function<void(configuration&)> command_line{}; // puts its values into what the file says

    std::string name() const { return file.empty() ? default_configuration_file() : file; }
    configuration read() const; // throws bad_configuration
};

class live_configuration
{
  public:
    using use = std::function<void(configuration const&)>;

    // apply is called on the watcher's thread with each new configuration. A file that cannot be used, or is not there
    // any more, leaves everything as it was; the log says so.
    live_configuration(configuration_source from, configuration initial, use apply);

    void look_now() { watcher_.look_now(); }

  private:
    void changed();

    configuration_source const from_;
    use const apply_;
    configuration current_; // the watcher's thread
    bool was_there_;
    configuration_watcher watcher_; // last: its thread uses the rest
};

// What a running publisher cannot change, of all that differs: in words, empty for nothing.
std::string at_next_start(configuration const& now, configuration const& wanted);

} // namespace quillo::publisher
