#include "tests/support/reference/reference.h"

#include <cstdint>
#include <optional>

namespace quillo::conversions::reference {
namespace {

int sample_16(unsigned char const* plane, int index) { return plane[2 * index] | plane[2 * index + 1] << 8; }

// Component 0..11 of a 16-byte group: six in each 64-bit word, three in each 32 bits.
int component_10(unsigned char const* group, int index)
{
    unsigned char const* word = group + index / 3 * 4;
    std::uint32_t const bits = word[0] | word[1] << 8 | word[2] << 16 | static_cast<std::uint32_t>(word[3]) << 24;
    return static_cast<int>(bits >> index % 3 * 10 & 1023);
}

void v210_run(unsigned char const* src, unsigned char* dst, int count)
{
    // The last group gives 2 pixels from 3 left, 4 from 5 left and all 6 only from 7 left.
    for (int left = count; left >= 3; left -= 6) {
        int const pixels = left < 5 ? 2 : left < 7 ? 4 : 6;
        for (int i = 0; i < 2 * pixels; ++i)
            *dst++ = static_cast<unsigned char>(component_10(src, i) >> 2);
        src += 16;
    }
}

} // namespace

void black_uyvy(call const& c)
{
    static unsigned char const black[4] = {0x80, 0x10, 0x80, 0x10};
    bool const joined = c.height == 1 || c.planes[0].stride == c.width * 2;
    for (run const& r : runs_of(c, joined)) {
        // Each of the last (count mod 16) pixels writes a whole pair.
        int const bytes = r.count / 16 * 32 + r.count % 16 * 4;
        for (int i = 0; i < bytes; ++i)
            r.at[0][i] = black[i % 4];
    }
}

void black_alpha(call const& c)
{
    static std::optional<int> kept;
    bool const joined = c.height == 1 || c.planes[0].stride == c.width;
    for (run const& r : runs_of(c, joined)) {
        int const in_blocks = r.count / 32 * 32;
        if (in_blocks > 0 && !kept)
            kept = c.option;
        for (int i = 0; i < r.count; ++i)
            r.at[0][i] = static_cast<unsigned char>(i < in_blocks ? *kept : c.option);
    }
}

void v210_to_uyvy(call const& c)
{
    bool const joined = c.height == 1 || (c.planes[0].stride * 6 == c.width * 16 && c.planes[1].stride == c.width * 2);
    for (run const& r : runs_of(c, joined))
        v210_run(r.at[0], r.at[1], r.count);
}

void p216_to_uyvy(call const& c)
{
    // The chroma plane joins at four bytes a pixel and is then read without gaps.
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width * 4 &&
                                          c.planes[2].stride == c.width * 2);
    for (run const& r : runs_of(c, joined))
        for (int i = 0; i < r.count; ++i) {
            r.at[2][2 * i] = static_cast<unsigned char>(sample_16(r.at[1], i) >> 8);
            r.at[2][2 * i + 1] = static_cast<unsigned char>(sample_16(r.at[0], i) >> 8);
        }
}

void alpha_u16_to_alpha(call const& c)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width);
    for (run const& r : runs_of(c, joined))
        for (int i = 0; i < r.count; ++i)
            r.at[1][i] = static_cast<unsigned char>(sample_16(r.at[0], i) >> 8);
}

void grey_to_bgra(call const& c)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width && c.planes[1].stride == c.width * 4);
    for (run const& r : runs_of(c, joined))
        for (int i = 0; i < r.count; ++i) {
            unsigned char const g = r.at[0][i];
            r.at[1][4 * i] = g;
            r.at[1][4 * i + 1] = g;
            r.at[1][4 * i + 2] = g;
            r.at[1][4 * i + 3] = 255;
        }
}

} // namespace quillo::conversions::reference
