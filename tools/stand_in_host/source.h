// What the stand-in host can play: a file, an address or a test pattern.
#pragma once

#include "tools/stand_in_host/host_time.h"
#include "tools/stand_in_host/picture.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace quillo::stand_in {

constexpr int max_channels = 16;

enum class field_order { progressive, upper_first, lower_first };

struct video_description
{
    int width = 0;
    int height = 0;
    frame_rate rate;
    int pixel_aspect_n = 1;
    int pixel_aspect_d = 1;
    field_order fields = field_order::progressive;
    pixel_layout natural = pixel_layout::vuya; // the layout that keeps the source's own component values
};

struct audio_description
{
    int rate = 0;                           // samples a second
    int channels = 0;                       // 1 to max_channels
    std::array<int, max_channels> labels{}; // PrAudioChannelLabel values; 0 is a discrete channel
};

// Pictures and sound of one clip, both counted from its start. One thread at a time draws and one, perhaps another,
// reads sound. Calls in rising order are cheap, others may have to search.
class source
{
  public:
    source() = default;
    source(source const&) = delete;
    source& operator=(source const&) = delete;
    virtual ~source() = default;

    virtual std::string title() const = 0;
    virtual video_description video() const = 0;
    virtual std::optional<audio_description> audio() const = 0;

    // None where the clip has no end.
    virtual std::optional<std::int64_t> frame_count() const = 0;

    // Draws a frame into a picture of the described size. False, and nothing drawn, after the last frame.
    virtual bool draw(std::int64_t frame, picture_view const& target) = 0;

    // Gives samples [first, first + count) of every channel; silence where the clip has none.
    virtual void read_audio(std::int64_t first, int count, float* const* channels) = 0;
};

} // namespace quillo::stand_in
