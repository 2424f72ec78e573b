#include "bench/road/test_picture.h"

#include <cstring>

namespace quillo::bench {

namespace {

constexpr std::uint8_t black = 16;
constexpr std::uint8_t white = 235;

std::array<std::uint32_t, 3> words_of(stamp const& s)
{
    auto const time = static_cast<std::uint64_t>(s.sent_ns);
    return {s.counter, static_cast<std::uint32_t>(time >> 32), static_cast<std::uint32_t>(time)};
}

void draw_stamp_row(std::uint32_t word, std::uint8_t* row)
{
    for (int bit = 0; bit < 32; ++bit) {
        std::uint8_t const luma = word >> (31 - bit) & 1 ? white : black;
        for (int x = 0; x < stamp_block; ++x) {
            row[(bit * stamp_block + x) * 2] = 128;
            row[(bit * stamp_block + x) * 2 + 1] = luma;
        }
    }
}

} // namespace

test_picture::test_picture(int width, int height) : width_(width), height_(height)
{
    std::uint32_t noise = 1;
    for (int variant = 0; auto& picture : variants_) {
        picture.resize(static_cast<std::size_t>(width) * height * 2);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                noise = noise * 1664525 + 1013904223;
                bool const block = ((x + variant * 24) / 96 + y / 96) % 5 == 0;
                auto* pixel = &picture[(static_cast<std::size_t>(y) * width + x) * 2];
                pixel[0] = static_cast<std::uint8_t>(x % 2 ? 96 + y * 64 / height : 96 + x * 64 / width);
                pixel[1] =
                    static_cast<std::uint8_t>((block ? 180 : 40 + (x + variant * 8) * 120 / width) + (noise >> 30));
            }
        ++variant;
    }
}

void test_picture::draw(stamp const& s, std::uint8_t* dst) const
{
    auto const& picture = variants_[s.counter % variants];
    std::memcpy(dst, picture.data(), picture.size());
    sign(s, dst);
}

void test_picture::sign(stamp const& s, std::uint8_t* dst) const
{
    auto const words = words_of(s);
    std::size_t const stride = static_cast<std::size_t>(width_) * 2;
    for (int y = 0; y < stamp_rows; ++y)
        draw_stamp_row(words[static_cast<std::size_t>(y / stamp_block)], dst + y * stride);
}

bool test_picture::equals(stamp const& s, std::uint8_t const* picture) const
{
    std::size_t const stride = static_cast<std::size_t>(width_) * 2;
    auto const& expected = variants_[s.counter % variants];
    auto const words = words_of(s);
    std::array<std::uint8_t, stamp_width * 2> stamped;
    for (int y = 0; y < stamp_rows; ++y) {
        draw_stamp_row(words[static_cast<std::size_t>(y / stamp_block)], stamped.data());
        if (std::memcmp(picture + y * stride, stamped.data(), stamped.size()) != 0)
            return false;
        if (std::memcmp(picture + y * stride + stamped.size(), &expected[y * stride + stamped.size()],
                        stride - stamped.size()) != 0)
            return false;
    }
    std::size_t const rest = stamp_rows * stride;
    return std::memcmp(picture + rest, &expected[rest], expected.size() - rest) == 0;
}

stamp read_stamp(std::uint8_t const* luma, int pixel_step, int row_stride)
{
    std::array<std::uint32_t, 3> words{};
    for (int row = 0; row < 3; ++row)
        for (int bit = 0; bit < 32; ++bit) {
            int const x = bit * stamp_block + stamp_block / 2;
            int const y = row * stamp_block + stamp_block / 2;
            std::uint32_t const one = luma[static_cast<std::ptrdiff_t>(y) * row_stride + x * pixel_step] > 125;
            words[static_cast<std::size_t>(row)] |= one << (31 - bit);
        }
    return {words[0], static_cast<std::int64_t>(std::uint64_t{words[1]} << 32 | words[2])};
}

} // namespace quillo::bench
