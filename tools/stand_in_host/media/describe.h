// From GStreamer's descriptions of streams to the stand-in host's.
#pragma once

#include "tools/stand_in_host/source.h"

#include <gst/gst.h>

namespace quillo::stand_in {

// From a decoded sample: its caps, and its flags where only they tell the field order.
video_description describe_video(GstSample* sample);

// Channels beyond the 16th are left out.
audio_description describe_audio(GstCaps* caps);

} // namespace quillo::stand_in
