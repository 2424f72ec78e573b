// Which of the formats that a plug-in offers the host takes.
#pragma once

#include "tools/stand_in_host/source.h"

#include "host/adapter.h"

#include <optional>
#include <string>
#include <vector>

namespace quillo::stand_in {

// As QueryVideoMode gives it; 0 in sizes and ratios and prFieldsAny stand for any.
struct video_mode
{
    int width = 0;
    int height = 0;
    int pixel_aspect_n = 0;
    int pixel_aspect_d = 0;
    prFieldType fields = prFieldsAny;
    PrPixelFormat format = PrPixelFormat_Invalid;
    PrTime latency = 0;
};

struct audio_mode
{
    float rate = 0;
    unsigned largest_block = 0; // samples
    unsigned channels = 0;
};

prFieldType field_type(field_order fields);

// The first mode that fits the clip without scaling, in a layout that the host makes: the only one allowed, or either.
std::optional<pixel_layout> choose_mode(std::vector<video_mode> const& modes, video_description const& video,
                                        std::optional<pixel_layout> only);

} // namespace quillo::stand_in
