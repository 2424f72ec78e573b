// A TCP connection that carries what is happening now.
#pragma once

#include <gio/gio.h>

namespace quillo::publisher {

// The last packets of a picture do not wait for the acknowledgement of those before, which may take 40 ms.
//
// And BBR, where it is this system's choice, gives way to reno. It takes a network that carries less for some seconds
// for one that is policed, and keeps to the pace that it found for dozens of round trips after that is over: pictures
// lag behind by seconds, where others show the next one live. What it is better at, loss on long ways, is rare on a
// local network. To be called of the socket that connections come in at, if possible: one that began with BBR keeps
// some of its pacing.
void make_live(GSocket* socket);

} // namespace quillo::publisher
