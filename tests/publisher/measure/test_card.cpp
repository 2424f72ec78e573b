#include "tests/publisher/measure/test_card.h"

#include <algorithm>

namespace quillo::measure {

namespace {

constexpr unsigned char low = 30;
constexpr unsigned char high = 220;

} // namespace

test_card::test_card(int width, int height, int bytes_a_pixel) : width_(width), bytes_a_pixel_(bytes_a_pixel), plain_(4)
{
    std::uint32_t noise = 1;
    for (int n = 0; n < 4; ++n)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int b = 0; b < bytes_a_pixel; ++b) {
                    // The layouts of one picture must agree, so the byte that BGR leaves out takes no noise.
                    if (b < 3)
                        noise = noise * 1664525u + 1013904223u;
                    bool const chroma = bytes_a_pixel == 2 && b == 0;
                    int const gradient = chroma ? 128 : 20 + ((x + y) / 8 + n * 10) % 200;
                    plain_[static_cast<std::size_t>(n)].push_back(
                        static_cast<unsigned char>(gradient + static_cast<int>(noise >> 30)));
                }
}

void test_card::mark(std::vector<unsigned char>& picture, std::uint64_t n, std::uint64_t time_us) const
{
    auto const stride = static_cast<std::size_t>(width_ * bytes_a_pixel_);
    for (int row = 0; row < rows; ++row) {
        std::uint64_t const value = row < block ? n : time_us;
        for (int x = 0; x < bits * block; ++x) {
            unsigned char const level = value >> (x / block) & 1 ? high : low;
            auto* const pixel = picture.data() + static_cast<std::size_t>(row) * stride + x * bytes_a_pixel_;
            if (bytes_a_pixel_ == 2)
                pixel[0] = 128, pixel[1] = level;
            else
                std::fill_n(pixel, bytes_a_pixel_, level);
        }
    }
}

test_card::marks test_card::read(unsigned char const* picture, std::size_t stride, int bytes_a_pixel, int offset)
{
    auto const value = [&](int row) {
        std::uint64_t result = 0;
        auto const* const line = picture + static_cast<std::size_t>(row + block / 2) * stride;
        for (int bit = 0; bit < bits; ++bit)
            if (line[(bit * block + block / 2) * bytes_a_pixel + offset] > (low + high) / 2)
                result |= std::uint64_t{1} << bit;
        return result;
    };
    return {value(0), value(block)};
}

std::size_t test_card::differing(std::vector<unsigned char> const& picture) const
{
    auto const seen = read(picture.data(), static_cast<std::size_t>(width_ * bytes_a_pixel_), bytes_a_pixel_,
                           bytes_a_pixel_ == 2 ? 1 : 0);
    auto expected = plain(seen.n);
    if (picture.size() != expected.size())
        return expected.size();
    mark(expected, seen.n, seen.time_us);
    if (picture == expected)
        return 0;
    std::size_t count = 0;
    for (std::size_t k = 0; k < expected.size(); ++k)
        count += picture[k] != expected[k];
    return count;
}

} // namespace quillo::measure
