#include "sender/open/records.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace quillo::open {

namespace {

std::size_t bytes_a_pixel(std::uint32_t fourcc)
{
    switch (fourcc) {
    case SenderFourCC_UYVY:
    case SenderFourCC_UYVA:
        return 2;
    case SenderFourCC_BGRA:
    case SenderFourCC_BGRX:
        return 4;
    default:
        return 0;
    }
}

bool in_range(std::int32_t value, std::int32_t most) { return value >= 1 && value <= most; }

} // namespace

char const* describe(refusal what)
{
    switch (what) {
    case refusal::no_data:
        return "no data";
    case refusal::size:
        return "size out of range";
    case refusal::stride:
        return "stride out of range";
    case refusal::fourcc:
        return "unknown pixel format";
    case refusal::rate:
        return "rate out of range";
    case refusal::channels:
        return "channel count out of range";
    }
    return "refused";
}

void picture::copy_lines(std::byte* whole, std::size_t first, std::size_t count) const
{
    auto const source = [&](std::size_t line) { return data + static_cast<std::ptrdiff_t>(line) * stride; };
    if (stride == static_cast<std::ptrdiff_t>(row_bytes))
        std::memcpy(whole + first * row_bytes, source(first), count * row_bytes);
    else
        for (std::size_t line = first; line < first + count; ++line)
            std::memcpy(whole + line * row_bytes, source(line), row_bytes);
    if (!alpha_bytes)
        return;
    auto const lines = static_cast<std::size_t>(format.height);
    std::size_t const alpha_row = alpha_bytes / lines;
    std::memcpy(whole + lines * row_bytes + first * alpha_row, source(lines) + first * alpha_row, count * alpha_row);
}

void sound::copy_to(std::byte* to) const
{
    if (!data)
        return;
    auto const* from = data;
    for (std::int32_t channel = 0; channel < format.channels; ++channel, to += channel_bytes()) {
        std::memcpy(to, from, channel_bytes());
        if (channel + 1 < format.channels)
            from += stride;
    }
}

std::variant<picture, refusal> check(SenderVideoFrame const& frame)
{
    auto const pixel = bytes_a_pixel(frame.fourCC);
    if (!pixel)
        return refusal::fourcc;
    bool const packed_pairs = pixel == 2;
    if (!in_range(frame.width, protocol::max_side) || !in_range(frame.height, protocol::max_side) ||
        (packed_pairs && frame.width % 2))
        return refusal::size;
    if (frame.frameRateN <= 0 || frame.frameRateD <= 0)
        return refusal::rate;
    if (!frame.data)
        return refusal::no_data;

    bool const alpha_plane = frame.fourCC == SenderFourCC_UYVA;
    auto const width = static_cast<std::size_t>(frame.width);
    auto const height = static_cast<std::size_t>(frame.height);
    auto const row = static_cast<std::int64_t>(width * pixel);
    // The alpha plane stands behind the last line: lines that run backwards leave no place for it.
    if (std::abs(std::int64_t{frame.lineStride}) < row || (alpha_plane && frame.lineStride < 0))
        return refusal::stride;

    bool const shape_known = std::isfinite(frame.aspectRatio) && frame.aspectRatio > 0;
    float const square = static_cast<float>(frame.width) / static_cast<float>(frame.height);
    auto const layout =
        frame.frameFormat == FrameFormat_interleaved ? FrameFormat_interleaved : FrameFormat_progressive;
    return picture{.format = {.width = frame.width,
                              .height = frame.height,
                              .fourcc = frame.fourCC,
                              .rate_n = frame.frameRateN,
                              .rate_d = frame.frameRateD,
                              .aspect = shape_known ? frame.aspectRatio : square,
                              .frame_format = layout,
                              .reserved = 0},
                   .data = frame.data,
                   .stride = frame.lineStride,
                   .row_bytes = static_cast<std::size_t>(row),
                   .alpha_bytes = alpha_plane ? width * height : 0};
}

std::variant<sound, refusal> check(SenderAudioFrame const& frame)
{
    if (!in_range(frame.sampleRate, protocol::max_sample_rate))
        return refusal::rate;
    if (!in_range(frame.channelCount, protocol::max_channels))
        return refusal::channels;
    if (!in_range(frame.sampleCount, protocol::max_block_samples) || frame.sampleCount / 10 > frame.sampleRate)
        return refusal::size;

    sound const block{.format = {.rate = frame.sampleRate, .channels = frame.channelCount},
                      .samples = frame.sampleCount,
                      .data = reinterpret_cast<unsigned char const*>(frame.data),
                      .stride = frame.channelStride};
    if (block.data && block.bytes() > protocol::max_body - sizeof(protocol::audio_body))
        return refusal::size;
    if (block.data && block.format.channels > 1 &&
        std::abs(std::int64_t{frame.channelStride}) < static_cast<std::int64_t>(block.channel_bytes()))
        return refusal::stride;
    return block;
}

} // namespace quillo::open
