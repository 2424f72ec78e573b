// quillo serve as a function.
#pragma once

#include "publisher/publisher.h"

#include <chrono>

namespace quillo::publisher {

struct serve_settings
{
    publisher_settings publishing;
    bool on_demand = false;          // ends by itself when there is nothing to do
    std::chrono::seconds linger{60}; // that long after the last sender has gone
};

// Publishes until SIGINT or SIGTERM, or until nobody needs it. Throws std::runtime_error.
void serve(serve_settings const& settings);

} // namespace quillo::publisher
