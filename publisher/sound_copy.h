// Blocks of sound in the forms that the mounts send.
#pragma once

#include "publisher/gst_ptr.h"
#include "publisher/listener.h"

namespace quillo::publisher {

// All channels, interleaved, 24 bit, most significant byte first; stamped.
buffer_ptr as_s24be(placed_sound const& block);

// Two channels of float, interleaved; stamped. Mono goes to both; of more than two the first two are taken, with centre
// and surrounds of 5.1 (left, right, centre, effects, surrounds) mixed in.
buffer_ptr as_stereo(placed_sound const& block);

} // namespace quillo::publisher
