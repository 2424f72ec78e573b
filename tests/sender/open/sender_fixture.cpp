#include "tests/sender/open/sender_fixture.h"

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace quillo::test {

private_folder::private_folder()
{
    std::array<char, 32> pattern{"/tmp/quillo-test-XXXXXX"};
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error{"mkdtemp"};
    name = pattern.data();
    ::setenv("QUILLO_RUNTIME_DIR", name.c_str(), 1);
    ::setenv("QUILLO_PUBLISHER", "", 1);
    ::setenv("QUILLO_LOG", "off", 1);
}

private_folder::~private_folder()
{
    // A program that a test started may still be at its log.
    std::error_code ignored;
    std::filesystem::remove_all(name, ignored);
}

sender_ptr make_sender(bool clock_video, bool clock_audio, char const* name)
{
    SenderSettings const settings{
        .sourceName = name, .groups = nullptr, .clockVideo = clock_video, .clockAudio = clock_audio};
    return sender_ptr{Quillolib_send_create(&settings)};
}

test_frame::test_frame(int width, int height, std::uint32_t fourcc, int padding, unsigned seed, bool upside_down)
{
    bool const packed = fourcc == SenderFourCC_UYVY || fourcc == SenderFourCC_UYVA;
    auto const row = static_cast<std::size_t>(width * (packed ? 2 : 4));
    auto const stride = row + static_cast<std::size_t>(padding);
    auto const lines = static_cast<std::size_t>(height);
    auto const alpha = fourcc == SenderFourCC_UYVA ? lines * static_cast<std::size_t>(width) : 0;
    memory.resize(stride * lines + alpha);
    for (std::size_t at = 0; at < memory.size(); ++at)
        memory[at] = static_cast<unsigned char>((at * 2654435761u + seed * 97) >> 7);

    auto const add = [&](std::size_t from, std::size_t count) {
        auto const* const start = reinterpret_cast<std::byte const*>(memory.data() + from);
        tight.insert(tight.end(), start, start + count);
    };
    for (std::size_t line = 0; line < lines; ++line)
        add((upside_down ? lines - 1 - line : line) * stride, row);
    add(stride * lines, alpha);

    record = {.width = width,
              .height = height,
              .fourCC = fourcc,
              .frameRateN = 60000,
              .frameRateD = 1001,
              .aspectRatio = 16.0f / 9.0f,
              .frameFormat = FrameFormat_progressive,
              .timecode = 333667,
              .data = memory.data() + (upside_down ? (lines - 1) * stride : 0),
              .lineStride = upside_down ? -static_cast<std::int32_t>(stride) : static_cast<std::int32_t>(stride)};
}

} // namespace quillo::test
