// The records of the interface, checked once, so that everything behind works on numbers that it can trust.
#pragma once

#include "sender/Quillolib_send.h"
#include "sender/open/protocol.h"

#include <cstddef>
#include <variant>

namespace quillo::open {

enum class refusal { no_data, size, stride, fourcc, rate, channels };

// What is wrong, for the log.
char const* describe(refusal);

// A picture in the host's memory, good for copying.
struct picture
{
    protocol::video_format_body format;
    unsigned char const* data; // the host's, the top line
    std::ptrdiff_t stride;     // may be negative, but not with an alpha plane
    std::size_t row_bytes;     // of a line without padding
    std::size_t alpha_bytes;   // of the plane behind the last line's stride, 0 for none

    std::size_t bytes() const { return row_bytes * static_cast<std::size_t>(format.height) + alpha_bytes; }

    // Writes bytes() bytes, rows and planes without gaps.
    void copy_to(std::byte* to) const { copy_lines(to, 0, static_cast<std::size_t>(format.height)); }
    // Of that only some lines, to their place in the whole.
    void copy_lines(std::byte* whole, std::size_t first, std::size_t count) const;
};

// Sound in the host's memory.
struct sound
{
    protocol::audio_format_body format;
    std::int32_t samples;      // a channel
    unsigned char const* data; // the host's; null is silence
    std::ptrdiff_t stride;     // bytes from channel to channel

    std::size_t channel_bytes() const { return static_cast<std::size_t>(samples) * sizeof(float); }
    std::size_t bytes() const { return data ? channel_bytes() * static_cast<std::size_t>(format.channels) : 0; }

    // Writes bytes() bytes, channels without gaps.
    void copy_to(std::byte* to) const;
};

// A line's stride must hold the line; pictures of 4:2:2 have an even width. A picture aspect ratio that is no positive
// number stands for square pixels.
std::variant<picture, refusal> check(SenderVideoFrame const&);

// A block lasts ten seconds at most, and fits a message.
std::variant<sound, refusal> check(SenderAudioFrame const&);

} // namespace quillo::open
