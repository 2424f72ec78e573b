// How this machine is called and reached.
#pragma once

#include <string>

namespace quillo::publisher {

// Without its domain.
std::string machine_name();

// An IPv4 address at which the local network reaches this machine, a private one first; 127.0.0.1 without any network.
std::string machine_address();

// Whether this is an address of the machine to itself.
bool is_loopback(std::string const& address);

} // namespace quillo::publisher
