#include "publisher/sound_copy.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace quillo::publisher {

namespace {

constexpr float minus_3_db = 0.70710678f;

buffer_ptr block_buffer(placed_sound const& block, std::size_t bytes)
{
    auto buffer = adopt<buffer_ptr>(gst_buffer_new_allocate(nullptr, bytes, nullptr));
    GST_BUFFER_PTS(buffer.get()) = static_cast<GstClockTime>(block.start_ns);
    GST_BUFFER_DURATION(buffer.get()) =
        gst_util_uint64_scale_int(static_cast<guint64>(block.samples), GST_SECOND, block.format.rate);
    if (!block.follows)
        GST_BUFFER_FLAG_SET(buffer.get(), GST_BUFFER_FLAG_DISCONT);
    return buffer;
}

std::int32_t to_24_bit(float sample)
{
    // A NaN becomes silence.
    float const scaled = sample * 8388608.0f;
    if (!(scaled > -8388608.0f))
        return scaled <= -8388608.0f ? -8388608 : 0;
    return scaled < 8388607.0f ? static_cast<std::int32_t>(std::lrintf(scaled)) : 8388607;
}

template <class Write>
buffer_ptr filled(placed_sound const& block, std::size_t bytes, Write write)
{
    auto buffer = block_buffer(block, bytes);
    GstMapInfo map;
    if (!gst_buffer_map(buffer.get(), &map, GST_MAP_WRITE))
        return nullptr;
    if (block.planar)
        write(map.data);
    else
        std::memset(map.data, 0, bytes);
    gst_buffer_unmap(buffer.get(), &map);
    return buffer;
}

} // namespace

buffer_ptr as_s24be(placed_sound const& block)
{
    auto const channels = static_cast<std::size_t>(block.format.channels);
    auto const samples = static_cast<std::size_t>(block.samples);
    return filled(block, channels * samples * 3, [&](unsigned char* out) {
        for (std::size_t c = 0; c < channels; ++c)
            for (std::size_t s = 0; s < samples; ++s) {
                auto const value = static_cast<std::uint32_t>(to_24_bit(block.planar[c * samples + s]));
                unsigned char* const at = out + (s * channels + c) * 3;
                at[0] = static_cast<unsigned char>(value >> 16);
                at[1] = static_cast<unsigned char>(value >> 8);
                at[2] = static_cast<unsigned char>(value);
            }
    });
}

buffer_ptr as_stereo(placed_sound const& block)
{
    auto const channels = static_cast<std::size_t>(block.format.channels);
    auto const samples = static_cast<std::size_t>(block.samples);
    return filled(block, samples * 2 * sizeof(float), [&](unsigned char* bytes) {
        auto const sample = [&](std::size_t channel, std::size_t s) { return block.planar[channel * samples + s]; };
        for (std::size_t s = 0; s < samples; ++s) {
            float pair[2] = {sample(0, s), sample(channels > 1 ? 1 : 0, s)};
            if (channels == 6) {
                float const centre = minus_3_db * sample(2, s);
                pair[0] += centre + minus_3_db * sample(4, s);
                pair[1] += centre + minus_3_db * sample(5, s);
            }
            std::memcpy(bytes + s * sizeof pair, pair, sizeof pair);
        }
    });
}

} // namespace quillo::publisher
