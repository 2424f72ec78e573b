// Sockets that the service manager has opened already, and hands over with the first connection.
#pragma once

#include "sender/open/descriptor.h"

namespace quillo::publisher {

// The local socket, if one was handed over; takes the environment's word once, so that no child process does too.
// Throws std::runtime_error when what was handed over is something else.
open::descriptor activated_socket();

} // namespace quillo::publisher
