// What a sender inside a host's process and the publisher of the same user say to each other.
//
// Transport: a Unix stream socket in a folder that belongs to the user alone. A message is a header followed by
// header.size bytes of body; a pool message carries one descriptor (SCM_RIGHTS). Byte order and alignment are the
// machine's, both ends run on it. Either end closes the connection on a message that it does not understand.
//
// Pictures go through shared memory: the sender makes a pool of slots, copies a picture into a free slot, and says so
// with a video message; the publisher gives the slot back when nobody shows that picture any more. It keeps few enough
// that min_free_slots are left to the sender, and copies what it would have to keep beyond that. It believes no size,
// stride or offset before checking it, and relies on nothing that the bytes of a picture say.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillo::protocol {

constexpr std::uint32_t version = 1;
constexpr std::uint32_t magic = 0x6F6C7551; // "Qulo"

constexpr std::uint32_t max_body = 1u << 20;         // of one message, bytes
constexpr std::uint32_t max_name = 255;              // of a source's name, bytes of UTF-8
constexpr std::int32_t max_side = 16384;             // of a picture, pixels
constexpr std::uint64_t max_slot_bytes = 1ull << 30; // of one picture
constexpr std::uint32_t max_slots = 16;              // of a pool
constexpr std::uint32_t min_free_slots = 8;          // for as many frames the publisher may not get its turn
constexpr std::int32_t max_channels = 64;            // of audio
constexpr std::int32_t max_block_samples = 1 << 16;  // a channel in one block
constexpr std::int32_t max_sample_rate = 768000;

enum class message : std::uint32_t {
    // sender to publisher
    hello = 1,        // hello_body, first on every connection
    video_format = 2, // video_format_body: sent before the first picture and on every change, watched or not
    audio_format = 3, // audio_format_body: likewise
    pool = 4,         // pool_body with one descriptor: from here on video messages speak of this pool
    video = 5,        // video_body: a picture is in a slot
    audio = 6,        // audio_body, then channels x samples floats, planar and tight
    losses = 7,       // losses_body: totals since the sender was made, at most once a second and only when they change

    // publisher to sender
    welcome = 16, // welcome_body, answers hello
    wants = 17,   // wants_body: whether anybody watches or listens; sent on every change
    release = 18, // release_body: the slot may be filled again

    // any local program, instead of hello, to the publisher and back
    status_request = 32, // no body
    status = 33          // UTF-8 JSON text
};

struct header
{
    std::uint32_t magic;
    message type;
    std::uint32_t size; // of the body
    std::uint32_t reserved;
};

struct hello_body
{
    std::uint32_t version;
    std::uint32_t pid;
    std::uint8_t
        sender_id[16];         // random, kept for the sender's life, so that a reconnection is known as the same source
    std::uint32_t name_size;   // bytes of UTF-8 that follow this body
    std::uint32_t groups_size; // bytes that follow the name
};

// The sender's wish for pictures follows from wants: nobody watches, no pixel is read.
struct wants_body
{
    std::uint32_t video;
    std::uint32_t audio;
};

struct welcome_body
{
    std::uint32_t version;
    std::uint32_t pid;
};

struct video_format_body
{
    std::int32_t width;
    std::int32_t height;
    std::uint32_t fourcc;
    std::int32_t rate_n;
    std::int32_t rate_d;
    float aspect;
    std::int32_t frame_format; // FrameFormat_interleaved or FrameFormat_progressive
    std::uint32_t reserved;
    bool operator==(video_format_body const&) const = default;
};

struct audio_format_body
{
    std::int32_t rate;
    std::int32_t channels;
    bool operator==(audio_format_body const&) const = default;
};

struct pool_body
{
    std::uint32_t pool_id; // counts up; a video message of an older pool is stale and only released
    std::uint32_t slots;
    std::uint64_t slot_bytes; // slot k starts at k x slot_bytes, a multiple of 4096
};

// The picture's rows stand in the slot without gaps: width x 2 or width x 4 bytes each; "UYVA" has the alpha plane of
// width bytes a row right behind.
struct video_body
{
    video_format_body format;
    std::uint32_t pool_id;
    std::uint32_t slot;
    std::int64_t timecode_100ns; // the host's time of the picture
    std::int64_t sent_ns;        // CLOCK_MONOTONIC at the send call
    std::uint64_t index;         // counts every video send since the sender was made, sent on or not
    std::uint32_t repeat;        // 1: the held picture again, for somebody who came while the host rests
    std::uint32_t reserved;
};

struct audio_body
{
    audio_format_body format;
    std::int32_t samples; // a channel
    std::uint32_t silent; // 1: the host had no audio for this block; no samples follow, timecode_100ns means nothing
    std::int64_t timecode_100ns;
    std::int64_t sent_ns;       // CLOCK_MONOTONIC at which the block's first sample is due
    std::uint64_t sample_index; // of the first sample, counts all samples sent since the sender was made
};

struct losses_body
{
    std::uint64_t video_sends;    // frames that the host gave
    std::uint64_t video_no_slot;  // not handed over: the publisher was late to give slots back
    std::uint64_t video_replaced; // not handed over: the next frame came first
    std::uint64_t video_refused;  // bad records
    std::uint64_t audio_sends;
    std::uint64_t audio_no_room; // not handed over: the publisher was late to read
    std::uint64_t audio_refused;
    std::uint64_t video_late; // new anchors of the video clock: the host was late
    std::uint64_t audio_late;
    bool operator==(losses_body const&) const = default;
};

struct release_body
{
    std::uint32_t pool_id;
    std::uint32_t slot;
};

static_assert(sizeof(header) == 16 && sizeof(hello_body) == 32 && sizeof(wants_body) == 8);
static_assert(sizeof(welcome_body) == 8 && sizeof(video_format_body) == 32 && sizeof(audio_format_body) == 8);
static_assert(sizeof(pool_body) == 16 && sizeof(video_body) == 72 && sizeof(audio_body) == 40);
static_assert(sizeof(losses_body) == 72 && sizeof(release_body) == 8);

} // namespace quillo::protocol
