// UYVY to RGB. Four-byte and planar targets have 6-bit weights, and whole blocks of theirs add a little chroma to the
// luma; three-byte targets have 8-bit weights.
#include "tests/support/reference/weights.h"

#include <cstdint>

namespace quillo::conversions::reference {
namespace {

// One pixel of a group U Y0 V Y1; below_luma is the chroma byte stored just before its luma.
struct sample
{
    int y, cb, cr, below_luma;
};

sample sample_at(unsigned char const* src, int pixel)
{
    unsigned char const* group = src + pixel / 2 * 4;
    return {group[pixel % 2 * 2 + 1], group[0], group[2], group[pixel % 2 * 2]};
}

struct six_bit_terms
{
    int r, g, b; // added to the luma term
};

six_bit_terms chroma_terms(sample const& s, matrix m)
{
    int const cb = s.cb - 128;
    int const cr = s.cr - 128;
    if (m == matrix::bt601)
        return {102 * cr, -(25 * cb + 52 * cr), 128 * cb};
    return {115 * cr, -(14 * cb + 53 * cr), 128 * cb};
}

// Sums of whole blocks are 16 bits wide and wrap.
int block_channel(int luma, int chroma)
{
    return clamp_to_byte(static_cast<std::int16_t>(static_cast<std::uint16_t>(luma + chroma)) >> 6);
}

int tail_channel(int luma, int chroma) { return clamp_to_byte((luma + chroma) >> 6); }

rgb six_bit(sample const& s, matrix m, bool in_block)
{
    six_bit_terms const t = chroma_terms(s, m);
    if (in_block) {
        int const luma = 74 * s.y + 74 * s.below_luma / 256 - 1192;
        return {block_channel(luma, t.r), block_channel(luma, t.g), block_channel(luma, t.b), 255};
    }
    int const luma = 74 * s.y - 1192;
    return {tail_channel(luma, t.r), tail_channel(luma, t.g), tail_channel(luma, t.b), 255};
}

rgb eight_bit(sample const& s, matrix m)
{
    if (m == matrix::bt601)
        return {clamp_to_byte((298 * s.y + 409 * s.cr - 56865) >> 8),
                clamp_to_byte((298 * s.y - 99 * s.cb - 207 * s.cr + 34680) >> 8),
                clamp_to_byte((298 * s.y + 517 * s.cb - 70635) >> 8), 255};
    return {clamp_to_byte((298 * s.y + 459 * s.cr - 63240) >> 8),
            clamp_to_byte((298 * s.y - 54 * s.cb - 136 * s.cr + 19635) >> 8),
            clamp_to_byte((299 * s.y + 541 * s.cb - 73695) >> 8), 255}; // 299 for blue alone
}

} // namespace

void uyvy_to_rgba(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count, matrix m,
                  rgb_order order)
{
    for (int i = 0; i < count / 2 * 2; ++i) {
        rgb const p = six_bit(sample_at(src, i), m, i < count / 8 * 8);
        dst[4 * i] = static_cast<unsigned char>(order == rgb_order::rgba ? p.r : p.b);
        dst[4 * i + 1] = static_cast<unsigned char>(p.g);
        dst[4 * i + 2] = static_cast<unsigned char>(order == rgb_order::rgba ? p.b : p.r);
        dst[4 * i + 3] = alpha ? alpha[i] : 255;
    }
}

void uyvy_to_bgr(unsigned char const* src, unsigned char* dst, int count, matrix m)
{
    for (int i = 0; i < (count + 1) / 2 * 2; ++i) {
        rgb const p = eight_bit(sample_at(src, i), m);
        dst[3 * i] = static_cast<unsigned char>(p.b);
        dst[3 * i + 1] = static_cast<unsigned char>(p.g);
        dst[3 * i + 2] = static_cast<unsigned char>(p.r);
    }
}

void uyvy_to_r_g_b(unsigned char const* src, unsigned char* r, unsigned char* g, unsigned char* b, int count, matrix m)
{
    for (int i = 0; i < count / 2 * 2; ++i) {
        rgb const p = six_bit(sample_at(src, i), m, i < count / 16 * 16);
        r[i] = static_cast<unsigned char>(p.r);
        g[i] = static_cast<unsigned char>(p.g);
        b[i] = static_cast<unsigned char>(p.b);
    }
}

void uyvy_to_rgba(call const& c, matrix m, rgb_order order)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width * 4);
    for (run const& r : runs_of(c, joined))
        uyvy_to_rgba(r.at[0], nullptr, r.at[1], r.count, m, order);
}

void uyvy_a_to_rgba(call const& c, matrix m, rgb_order order)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width &&
                                          c.planes[2].stride == c.width * 4);
    for (run const& r : runs_of(c, joined))
        uyvy_to_rgba(r.at[0], r.at[1], r.at[2], r.count, m, order);
}

void uyvy_to_bgr(call const& c, matrix m)
{
    // Joined at four bytes a pixel, and then written without gaps.
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width * 4);
    for (run const& r : runs_of(c, joined))
        uyvy_to_bgr(r.at[0], r.at[1], r.count, m);
}

void uyvy_to_r_g_b(call const& c, matrix m)
{
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 2 && c.planes[1].stride == c.width);
    for (run const& r : runs_of(c, joined))
        uyvy_to_r_g_b(r.at[0], r.at[1], r.at[2], r.at[3], r.count, m);
}

} // namespace quillo::conversions::reference
