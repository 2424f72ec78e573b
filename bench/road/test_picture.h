// A picture that tells which frame it is and when it was sent, also after a lossy encoder: three rows of 32 blocks of
// 16 x 16 pixels hold a 32-bit counter and a 64-bit time, white for 1, black for 0, above a gradient with noise.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace quillo::bench {

constexpr int stamp_block = 16;
constexpr int stamp_width = 32 * stamp_block; // smallest picture: 512 x 64
constexpr int stamp_rows = 3 * stamp_block;

struct stamp
{
    std::uint32_t counter;
    std::int64_t sent_ns; // CLOCK_MONOTONIC
};

// UYVY pictures, tight rows.
class test_picture
{
  public:
    static constexpr std::uint32_t variants = 4; // by the counter

    test_picture(int width, int height);

    // Fills dst (width x height x 2 bytes) with the picture of this stamp.
    void draw(stamp const& s, std::uint8_t* dst) const;

    // Only the stamp, over another one of the same counter.
    void sign(stamp const& s, std::uint8_t* dst) const;

    // Whether picture is, byte for byte, what draw() makes of s.
    bool equals(stamp const& s, std::uint8_t const* picture) const;

  private:
    int width_;
    int height_;
    std::array<std::vector<std::uint8_t>, variants> variants_;
};

// Reads the stamp from luma: first byte, bytes from pixel to pixel, bytes from row to row.
stamp read_stamp(std::uint8_t const* luma, int pixel_step, int row_stride);

} // namespace quillo::bench
