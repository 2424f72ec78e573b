// Somebody who takes a source's pictures and sound: a raw viewer, or the encoder of all encoded ones.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

#include <cstdint>

namespace quillo::publisher {

// Sound of one block on the common clock.
struct placed_sound
{
    sound_format format;
    int samples;
    float const* planar; // channels x samples; null is silence
    std::int64_t start_ns;
    bool follows; // the block before without a gap
};

// All calls are made with the source's lock held, from one thread at a time, and must return quickly.
class listener
{
  public:
    virtual ~listener() = default;

    // The shape of everything from here on; called before the first picture and on every change.
    virtual void format(picture_format const& pictures, sound_format const& sound) = 0;

    // A picture of the announced shape; its time stamp is on the common clock. Not to be changed.
    virtual void picture(GstBuffer* fill) = 0;

    // The same with its alpha, straight and of the same size, as alpha_info has it; null where everything is opaque.
    // This is what is called; whoever has no use for alpha leaves it at picture().
    virtual void keyed_picture(GstBuffer* fill, GstBuffer* /*alpha*/) { picture(fill); }

    virtual void sound(placed_sound const& block) = 0;

    // The sender has gone and may come back; a slate and silence come from here on. Whoever has no use for them ends.
    virtual void away() { ended(); }

    // The sender has gone; nothing comes any more.
    virtual void ended() = 0;
};

} // namespace quillo::publisher
