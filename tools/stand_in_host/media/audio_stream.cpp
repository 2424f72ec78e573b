#include "tools/stand_in_host/media/audio_stream.h"
#include "tools/stand_in_host/media/describe.h"

#include <gst/audio/audio.h>

#include <algorithm>
#include <cstring>

namespace quillo::stand_in {

namespace {

constexpr std::int64_t second_ns = 1000000000;

// Files round their times, some to milliseconds: up to this much is no gap.
int tolerated_gap(int rate) { return rate / 50; }

} // namespace

audio_stream::audio_stream(stream_reader& reader_, std::chrono::nanoseconds origin_)
    : reader(reader_), audio(describe_audio(reader.caps())), origin(origin_), searchable(reader.is_searchable())
{
    GstAudioInfo info;
    gst_audio_info_from_caps(&info, reader.caps());
    stream_channels = info.channels;
}

std::int64_t audio_stream::end_of(block const& b) const
{
    return b.first + static_cast<std::int64_t>(b.samples.size()) / stream_channels;
}

void audio_stream::search(std::int64_t first)
{
    // Decoders need a block or two to find in again.
    std::int64_t const from = std::max<std::int64_t>(first - audio.rate / 10, 0);
    if (!reader.seek(std::chrono::nanoseconds(scaled(from, second_ns, audio.rate)))) {
        searchable = false;
        return;
    }
    blocks.clear();
    ended = false;
    known_from = first;
}

bool audio_stream::read_block()
{
    sample_ptr const sample = reader.next();
    GstMapInfo map;
    if (!sample || !gst_buffer_map(gst_sample_get_buffer(sample.get()), &map, GST_MAP_READ))
        return false;
    block b{scaled((stream_time(sample.get()) - origin).count(), audio.rate, second_ns), {}};
    b.samples.resize(map.size / sizeof(float));
    std::memcpy(b.samples.data(), map.data, b.samples.size() * sizeof(float));
    gst_buffer_unmap(gst_sample_get_buffer(sample.get()), &map);
    if (!blocks.empty() && std::abs(b.first - end_of(blocks.back())) < tolerated_gap(audio.rate))
        b.first = end_of(blocks.back());
    blocks.push_back(std::move(b));
    return true;
}

void audio_stream::read(std::int64_t first, int count, float* const* channels)
{
    for (int c = 0; c < audio.channels; ++c)
        std::fill_n(channels[c], count, 0.0f);

    bool const passed = std::max<std::int64_t>(first, 0) < known_from;
    bool const far_ahead = first > (blocks.empty() ? known_from : end_of(blocks.back())) + audio.rate;
    if (searchable && !(ended && far_ahead) && (passed || far_ahead))
        search(std::max<std::int64_t>(first, 0));
    while (!ended && (blocks.empty() || end_of(blocks.back()) < first + count))
        ended = !read_block();

    for (block const& b : blocks) {
        std::int64_t const from = std::max(first, b.first);
        std::int64_t const to = std::min(first + count, end_of(b));
        for (std::int64_t s = from; s < to; ++s)
            for (int c = 0; c < audio.channels; ++c)
                channels[c][s - first] = b.samples[static_cast<std::size_t>((s - b.first) * stream_channels + c)];
    }
    while (blocks.size() > 1 && end_of(blocks.front()) <= first) {
        known_from = end_of(blocks.front());
        blocks.pop_front();
    }
}

} // namespace quillo::stand_in
