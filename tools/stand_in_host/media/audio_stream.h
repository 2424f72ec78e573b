// The sound of an input by sample number.
#pragma once

#include "tools/stand_in_host/media/stream_reader.h"
#include "tools/stand_in_host/source.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace quillo::stand_in {

class audio_stream
{
  public:
    // The reader must exist. It outlives the stream. origin: the time that the input gives to the clip's start.
    audio_stream(stream_reader& reader, std::chrono::nanoseconds origin);

    audio_description const& description() const { return audio; }

    // Silence before, after and in the gaps of the stream.
    void read(std::int64_t first, int count, float* const* channels);

  private:
    struct block
    {
        std::int64_t first;
        std::vector<float> samples; // interleaved, as many channels as the stream has
    };

    std::int64_t end_of(block const& b) const;
    void search(std::int64_t first);
    bool read_block();

    stream_reader& reader;
    audio_description audio;
    int stream_channels;
    std::chrono::nanoseconds origin;
    bool searchable = true;
    bool ended = false;
    std::int64_t known_from = 0; // everything from here to the newest block's end is in the blocks, gaps aside
    std::deque<block> blocks;    // without gaps in their order; the newest last
};

} // namespace quillo::stand_in
