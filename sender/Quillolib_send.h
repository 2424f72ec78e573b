/* The network sender: one named live source, fed with video and audio frames.
 *
 * Five functions and three records, plain C, x86-64 and arm64, natural alignment, little endian. Any library with this
 * interface and the soname libquillo.so.4 (macOS: libquillo.4.dylib) can stand behind a program built against it.
 *
 * Times are 100 ns units. All functions may be called from several threads at once, except that a sender must not be
 * in use by another thread while it is destroyed. No function reports an error beyond the null handle: a record that
 * cannot be sent is dropped, counted and logged once.
 */
#ifndef QUILLOLIB_SEND_H
#define QUILLOLIB_SEND_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define QUILLOLIB_SEND_API __attribute__((visibility("default")))
#else
#define QUILLOLIB_SEND_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A sender; null is no sender. Owned by whoever created it, released with Quillolib_send_destroy. */
typedef void* SenderHandle;

typedef struct SenderSettings
{
    char const* sourceName; /* the source's name on the network, zero-terminated UTF-8; copied */
    char const* groups;     /* names of groups, null for the default; copied */
    bool clockVideo;        /* pace video sends to the frame rate */
    bool clockAudio;        /* pace audio sends to the sample rate */
} SenderSettings;

/* Four characters, the first in the lowest byte. */
enum {
    SenderFourCC_UYVY = 0x59565955, /* 4:2:2, 2 bytes a pixel: U, Y0, V, Y1 for each pair */
    SenderFourCC_UYVA = 0x41565955, /* the UYVY picture, then height lines of width alpha bytes */
    SenderFourCC_BGRA = 0x41524742, /* 4 bytes a pixel, straight alpha */
    SenderFourCC_BGRX = 0x58524742  /* 4 bytes a pixel, the fourth without meaning */
};

typedef enum FrameFormat {
    FrameFormat_interleaved = 0, /* both fields of an interlaced frame, woven, upper field first */
    FrameFormat_progressive = 1
} FrameFormat;

typedef struct SenderVideoFrame
{
    int32_t width;       /* pixels a line */
    int32_t height;      /* lines */
    uint32_t fourCC;     /* SenderFourCC_... */
    int32_t frameRateN;  /* frame rate, numerator */
    int32_t frameRateD;  /* frame rate, denominator */
    float aspectRatio;   /* of the picture as shown: width over height */
    int32_t frameFormat; /* FrameFormat_... */
    int64_t timecode;    /* 100 ns units */
    uint8_t const* data; /* first byte of the top line */
    int32_t lineStride;  /* bytes from one line to the next */
} SenderVideoFrame;

typedef struct SenderAudioFrame
{
    int32_t sampleRate;    /* samples a second */
    int32_t channelCount;  /* channels */
    int32_t sampleCount;   /* samples a channel in this frame */
    int64_t timecode;      /* 100 ns units */
    float const* data;     /* planar: channel 0's samples, then channel 1's, ...; null is silence */
    int32_t channelStride; /* bytes from the start of one channel to the next */
} SenderAudioFrame;

/* Makes a sender and announces it. Null on failure. Returns within a few milliseconds. */
QUILLOLIB_SEND_API SenderHandle Quillolib_send_create(SenderSettings const* settings);

/* Withdraws the source and frees the sender; nothing for a null handle. */
QUILLOLIB_SEND_API void Quillolib_send_destroy(SenderHandle sender);

/* With a null frame: waits until the frame last given to Quillolib_send_send_video_async is no longer read, so that its
 * buffer may be reused or freed. With a frame: sends it and waits likewise. */
QUILLOLIB_SEND_API void Quillolib_send_send_video(SenderHandle sender, SenderVideoFrame const* frame);

/* Returns at once. frame->data is read until the next video call on the same sender. */
QUILLOLIB_SEND_API void Quillolib_send_send_video_async(SenderHandle sender, SenderVideoFrame const* frame);

/* Sends a block of samples, which are no longer needed on return. With clockAudio the call returns when the block's
 * time is over and the next one's begins, so that a loop of sends runs at the sample rate. */
QUILLOLIB_SEND_API void Quillolib_send_send_audio(SenderHandle sender, SenderAudioFrame const* frame);

#ifdef __cplusplus
}

static_assert(sizeof(SenderSettings) == 24 && offsetof(SenderSettings, sourceName) == 0);
static_assert(offsetof(SenderSettings, groups) == 8 && offsetof(SenderSettings, clockVideo) == 16);
static_assert(offsetof(SenderSettings, clockAudio) == 17);

static_assert(sizeof(SenderVideoFrame) == 56 && offsetof(SenderVideoFrame, width) == 0);
static_assert(offsetof(SenderVideoFrame, height) == 4 && offsetof(SenderVideoFrame, fourCC) == 8);
static_assert(offsetof(SenderVideoFrame, frameRateN) == 12 && offsetof(SenderVideoFrame, frameRateD) == 16);
static_assert(offsetof(SenderVideoFrame, aspectRatio) == 20 && offsetof(SenderVideoFrame, frameFormat) == 24);
static_assert(offsetof(SenderVideoFrame, timecode) == 32 && offsetof(SenderVideoFrame, data) == 40);
static_assert(offsetof(SenderVideoFrame, lineStride) == 48);

static_assert(sizeof(SenderAudioFrame) == 40 && offsetof(SenderAudioFrame, sampleRate) == 0);
static_assert(offsetof(SenderAudioFrame, channelCount) == 4 && offsetof(SenderAudioFrame, sampleCount) == 8);
static_assert(offsetof(SenderAudioFrame, timecode) == 16 && offsetof(SenderAudioFrame, data) == 24);
static_assert(offsetof(SenderAudioFrame, channelStride) == 32);
#endif

#endif
