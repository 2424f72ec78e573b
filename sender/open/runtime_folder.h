// The folder of the user's own, in which the publisher's socket stands.
#pragma once

#include <string>

namespace quillo::open {

// $QUILLO_RUNTIME_DIR, else $XDG_RUNTIME_DIR/quillo, else /tmp/quillo-UID. Reads the environment; touches no file.
std::string runtime_folder();

// The publisher's socket in that folder.
std::string socket_path(std::string const& folder);

// Whether the folder belongs to this user and nobody else can write or read it. Makes it where it is missing. False,
// with why in problem, when it cannot be trusted: then nothing may be sent through it.
bool make_private_folder(std::string const& folder, std::string& problem);

} // namespace quillo::open
