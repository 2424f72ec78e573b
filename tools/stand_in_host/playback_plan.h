// Which frame is due when, and where the sound is, for one run of the clock.
#pragma once

#include "tools/stand_in_host/host_time.h"

#include <cstdint>
#include <optional>

namespace quillo::stand_in {

// Frames are numbered by their place on the time line. Pushes are counted from 0 in the order in which they come due.
// At speeds above 1 frames are left out, so that no more are shown than the frame rate says; below 1 each is shown once
// and stays longer.
struct playback_plan
{
    ticks frame_length = 1;
    std::int64_t first = 0; // frame shown at once
    std::int64_t in = 0;    // frames
    std::int64_t out = 0;   // frames, exclusive
    bool loop = false;
    double speed = 1; // below 0: backwards; never 0
    bool scrubbing = false;

    // The frame of a push; none after the last.
    std::optional<std::int64_t> frame(std::int64_t push) const;

    // When it is due: the clock's elapsed time.
    ticks due(std::int64_t push) const;

    // The newest push that is due.
    std::int64_t newest_due(ticks elapsed) const;

    // Where the clock starts. Backwards, a frame is entered at its end.
    ticks start_time() const { return time_of(speed > 0 ? first : first + 1); }

    // When a frame begins.
    ticks time_of(std::int64_t frame) const { return frame * frame_length; }

    // The place on the time line after an elapsed time; none where playing has ended.
    std::optional<ticks> position(ticks elapsed) const;

    // Elapsed time until the place next jumps or playing ends, counted from the start: the smallest such time beyond
    // the given one.
    ticks next_break(ticks elapsed) const;
};

} // namespace quillo::stand_in
