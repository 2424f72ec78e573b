// Threads that a busy machine gives no time to.
#pragma once

#include <chrono>
#include <string>

namespace quillo::testing {

// Holds all threads of this process that bear this name, wherever they are just now, and does not wait for them.
// Returns how many there are.
int hold_threads(std::string const& name, std::chrono::milliseconds during);

} // namespace quillo::testing
