// Figures of a whole run, over all its clips.
#pragma once

#include "tools/stand_in_host/audio_output.h"
#include "tools/stand_in_host/frame_ledger.h"
#include "tools/stand_in_host/histogram.h"
#include "tools/stand_in_host/journal.h"
#include "tools/stand_in_host/playback_clock.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace quillo::stand_in {

struct clip_facts
{
    std::string title;
    video_description video;
    pixel_layout format = pixel_layout::vuya;
    int audio_rate = 0; // 0: no sound
    int audio_channels = 0;
};

struct statistics
{
    long pushed = 0;
    long late = 0;    // pushed after their time had passed
    long dropped = 0; // left out because the clock was ahead
    long stills = 0;  // pushed while the clock stood still
    long starts = 0;  // of the clock
    histogram push_time;
    clock_report clock;
    double jitter_p50_ms = 0;
    double jitter_p99_ms = 0;
    double jitter_max_ms = 0;
    audio_counts audio;
    std::vector<clip_facts> clips;
};

char const* name_of(pixel_layout layout);
char const* name_of(field_order fields);

nlohmann::json to_json(statistics const& figures, frame_counts const& frames, journal const& log);

} // namespace quillo::stand_in
