// Whether a request is meant for this machine and comes from a page of ours. A foreign page can make a browser ask us
// anything, under a name of its own choice; it cannot make it lie in these headers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillo::publisher {

// The host in a Host header or behind the scheme of an origin: lower case, without port and brackets; empty when
// malformed.
std::string host_of(std::string_view authority);

// Names by which this machine may be asked for: itself and what it is called.
std::vector<std::string> own_names();

// A Host header that names this machine: one of the names or the address that the connection came to.
bool is_own_host(std::string_view header, std::vector<std::string> const& names, std::string_view local_address);

// An Origin header that belongs to the page of the same Host header.
bool is_own_origin(std::string_view origin, std::string_view host);

} // namespace quillo::publisher
