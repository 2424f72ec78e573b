// The pictures of an input by frame number.
#pragma once

#include "tools/stand_in_host/media/stream_reader.h"
#include "tools/stand_in_host/source.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>

namespace quillo::stand_in {

// Frames are counted at the described rate from the start of the input. A frame that the input does not have (varying
// rate, gaps) shows the one before it.
class video_stream
{
  public:
    // The reader must exist. It outlives the stream.
    explicit video_stream(stream_reader& reader);

    video_description const& description() const { return video; }

    // An estimate until the end was reached; none where there is no end.
    std::optional<std::int64_t> frame_count() const; // [any thread]

    bool draw(std::int64_t frame, picture_view const& target);

    // The time that the input itself gives to the first frame.
    std::chrono::nanoseconds origin() const { return begin; }

  private:
    static constexpr std::int64_t endless = -1;

    struct picture
    {
        std::int64_t frame;
        sample_ptr sample;
    };

    std::int64_t frame_of(GstSample* sample) const;
    std::int64_t frames_in(std::chrono::nanoseconds time) const;
    GstSample* find(std::int64_t frame);
    void read_up_to(std::int64_t frame);
    void search(std::int64_t frame);
    void count_frames();
    bool draw_stored(GstSample* sample, picture_view const& target) const;

    stream_reader& reader;
    video_description video;
    orientation how;
    std::chrono::nanoseconds begin{};
    std::atomic<std::int64_t> count = endless;
    bool still = false;
    bool searchable = true;
    std::deque<picture> recent; // rising, the newest last; enough to step and play backwards smoothly
};

} // namespace quillo::stand_in
