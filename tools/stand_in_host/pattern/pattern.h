// Test pictures with sound, for when there is no file.
#pragma once

#include "tools/stand_in_host/source.h"

#include <memory>

namespace quillo::stand_in {

enum class pattern_kind {
    bars,  // colour bars, counter, moving line, grey ramp, flash and beep
    alpha, // the same with an alpha ramp instead of the grey one
    flash  // black, all white for the flash; the counter strip stays
};

struct pattern_settings
{
    pattern_kind kind = pattern_kind::bars;
    int width = 1920;
    int height = 1080;
    frame_rate rate{60000, 1001};
    field_order fields = field_order::progressive;
    pixel_layout layout = pixel_layout::vuya; // said to be natural
    int channels = 2;                         // 0: no sound
    int sample_rate = 48000;
};

// From top to bottom, in eighteenths of the height: counter strip 1, bars to 11, moving line to 12, digits and, in the
// right quarter, the flash to 15, ramp to 18.
//
// The flash begins with every frame whose number is a multiple of the rate rounded to a whole number and lasts 80 ms;
// a 1 kHz beep of the same length begins with the sample nearest to that frame's time, in every channel.
std::unique_ptr<source> make_pattern(pattern_settings const& settings);

// Where the flash is seen.
struct point
{
    int x, y;
};
point flash_center(int width, int height);

// Every how many frames it flashes, and the sample at which the beep of a flash begins.
std::int64_t flash_period(frame_rate rate);
std::int64_t beep_start(std::int64_t frame, frame_rate rate, int sample_rate);

} // namespace quillo::stand_in
