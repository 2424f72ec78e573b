// quillo serve as a function.
#pragma once

#include "publisher/config/reload.h"

#include <chrono>

namespace quillo::publisher {

struct serve_settings
{
    configuration_source configured;
    bool on_demand = false;          // ends by itself when there is nothing to do
    std::chrono::seconds linger{60}; // that long after the last sender has gone
};

// Publishes until SIGINT or SIGTERM, or until nobody needs it; SIGHUP has the configuration read again. Takes its
// socket from the service manager, if that listens already. Throws std::runtime_error.
void serve(serve_settings const& settings);

} // namespace quillo::publisher
