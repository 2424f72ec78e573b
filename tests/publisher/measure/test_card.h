// Pictures that tell their number and the time at which they were sent, and every byte of which is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillo::measure {

class test_card
{
  public:
    // bytes_a_pixel: 2 for UYVY, 4 for BGRX, 3 for BGR (what a receiver of BGRX gets).
    test_card(int width, int height, int bytes_a_pixel);

    // Picture number n without its marks; the same for n and n + 4.
    std::vector<unsigned char> const& plain(std::uint64_t n) const { return plain_[n % plain_.size()]; }

    // Writes number and time into the top rows of a picture of this layout.
    void mark(std::vector<unsigned char>& picture, std::uint64_t n, std::uint64_t time_us) const;

    struct marks
    {
        std::uint64_t n;
        std::uint64_t time_us;
    };
    // Of a picture's luma or first components; survives encoding.
    static marks read(unsigned char const* picture, std::size_t stride, int bytes_a_pixel, int offset);

    // Bytes that are not as they were sent.
    std::size_t differing(std::vector<unsigned char> const& picture) const;

    static constexpr int block = 16; // side of a mark's bit
    static constexpr int bits = 48;
    static constexpr int rows = 2 * block;

  private:
    int const width_;
    int const bytes_a_pixel_;
    std::vector<std::vector<unsigned char>> plain_;
};

} // namespace quillo::measure
