// YCbCr between packed, planar and semi-planar layouts. Odd runs: luma and 4:4:4 targets get exactly the run's pixels,
// interleaved chroma as many bytes as pixels, separate chroma planes half of them.
#include "tests/support/reference/reference.h"

#include <cstddef>

namespace quillo::conversions::reference {
namespace {

bool strides_are(call const& c, std::vector<int> const& bytes_per_pixel)
{
    for (std::size_t i = 0; i < bytes_per_pixel.size(); ++i)
        if (c.planes[i].stride != c.width * bytes_per_pixel[i])
            return false;
    return true;
}

bool is_joined(call const& c, std::vector<int> const& bytes_per_pixel)
{
    return c.height == 1 || strides_are(c, bytes_per_pixel);
}

unsigned char* line(plane const& p, int index) { return p.data + std::ptrdiff_t{p.stride} * index; }

int expanded(int y)
{
    return clamp_to_byte((301 * y - 5117) >> 8); // 5117 = 17 x 301
}

int compressed(int y) { return (220 * y >> 8) + 16; }

void pick_luma(unsigned char const* uyvy, unsigned char* y, int count)
{
    for (int i = 0; i < count; ++i)
        y[i] = uyvy[2 * i + 1];
}

void pick_chroma(unsigned char const* uyvy, unsigned char* uv, int count)
{
    for (int i = 0; i < count; ++i)
        uv[i] = uyvy[2 * i];
}

void pick_u_and_v(unsigned char const* uyvy, unsigned char* u, unsigned char* v, int count)
{
    for (int i = 0; i < count / 2; ++i) {
        u[i] = uyvy[4 * i];
        v[i] = uyvy[4 * i + 2];
    }
}

void interleave_bytes(unsigned char const* u, unsigned char const* v, unsigned char* uv, int samples)
{
    for (int i = 0; i < samples; ++i) {
        uv[2 * i] = u[i];
        uv[2 * i + 1] = v[i];
    }
}

// Both pixels of a pair repeat its Cb and Cr. alpha may be null, the fourth byte is then 255.
void widen_to_444(unsigned char const* uyvy, unsigned char const* alpha, unsigned char* dst, int count, bool cr_first)
{
    for (int i = 0; i < count; ++i) {
        unsigned char const y = uyvy[2 * i + 1];
        unsigned char const cb = uyvy[i / 2 * 4];
        unsigned char const cr = uyvy[i / 2 * 4 + 2];
        dst[4 * i] = cr_first ? cr : y;
        dst[4 * i + 1] = cb;
        dst[4 * i + 2] = cr_first ? y : cr;
        dst[4 * i + 3] = alpha ? alpha[i] : 255;
    }
}

} // namespace

void composite_over_black(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count)
{
    int const in_blocks = count / 16 * 16;
    int const whole_pairs = (count + 1) / 2 * 2;
    for (int i = 0; i < 2 * whole_pairs; ++i) {
        int const w = alpha[i / 2] + 1;
        int const black = i % 2 == 0 ? 128 : 16;
        int const out = i / 2 < in_blocks ? clamp_to_byte((src[i] * w >> 8) + ((256 - w) * black >> 8))
                                          : ((src[i] - black) * w >> 8) + black;
        dst[i] = static_cast<unsigned char>(out);
    }
}

void uyvy_a_to_crcbya(unsigned char const* src, unsigned char const* alpha, unsigned char* dst, int count)
{
    widen_to_444(src, alpha, dst, count, true);
}

// A 4:2:0 copy: half as many chroma lines, an even number of chroma bytes.
void y_uv_copy(call const& c)
{
    copy_plane(with_planes(c, {0, 2}), 1);
    call chroma = with_planes(c, {1, 3});
    chroma.width = c.width / 2 * 2;
    chroma.height = c.height / 2;
    copy_plane(chroma, 1);
}

void y_uv_to422(call const& c)
{
    copy_plane(with_planes(c, {0, 2}), 1);
    for (int i = 0; i < c.height / 2 * 2; ++i)
        copy_bytes(line(c.planes[1], i / 2), line(c.planes[3], i), c.width);
}

void y_u_v_to_y_uv(call const& c)
{
    copy_plane(with_planes(c, {0, 3}), 1);
    for (int i = 0; i < c.height / 2; ++i)
        interleave_bytes(line(c.planes[1], i), line(c.planes[2], i), line(c.planes[4], i), c.width / 2);
}

void y_u_v_to_y_uv_to422(call const& c)
{
    copy_plane(with_planes(c, {0, 3}), 1);
    for (int i = 0; i < c.height / 2 * 2; ++i)
        interleave_bytes(line(c.planes[1], i / 2), line(c.planes[2], i / 2), line(c.planes[4], i), c.width / 2);
}

void swap_bytes(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 2})))
        for (int i = 0; i < r.count; ++i) {
            r.at[1][2 * i] = r.at[0][2 * i + 1];
            r.at[1][2 * i + 1] = r.at[0][2 * i];
        }
}

void split_y_uv_422(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1, 1}))) {
        pick_luma(r.at[0], r.at[1], r.count);
        pick_chroma(r.at[0], r.at[2], r.count);
    }
}

// Chroma of the even lines only.
void split_y_uv_420(call const& c)
{
    for (int i = 0; i < c.height; ++i) {
        pick_luma(line(c.planes[0], i), line(c.planes[1], i), c.width);
        if (i % 2 == 0)
            pick_chroma(line(c.planes[0], i), line(c.planes[2], i / 2), c.width);
    }
}

void split_y_u_v_422(call const& c)
{
    bool const joined = c.height == 1 || (strides_are(c, {2, 1}) && c.planes[2].stride == c.width / 2 &&
                                          c.planes[3].stride == c.width / 2);
    for (run const& r : runs_of(c, joined)) {
        pick_luma(r.at[0], r.at[1], r.count);
        pick_u_and_v(r.at[0], r.at[2], r.at[3], r.count);
    }
}

void split_y_u_v_420(call const& c)
{
    for (int i = 0; i < c.height; ++i) {
        pick_luma(line(c.planes[0], i), line(c.planes[1], i), c.width);
        if (i % 2 == 0)
            pick_u_and_v(line(c.planes[0], i), line(c.planes[2], i / 2), line(c.planes[3], i / 2), c.width);
    }
}

void luma(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1}))) {
        int const in_blocks = r.count / 32 * 32;
        for (int i = 0; i < r.count; ++i) {
            int y = r.at[0][2 * i + 1];
            // The last pixels of a run are not scaled back: 0 or 255.
            if (c.option)
                y = i < in_blocks ? expanded(y) : clamp_to_byte(301 * y - 5117);
            r.at[1][i] = static_cast<unsigned char>(y);
        }
    }
}

void luma_to_uyvy(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {1, 2})))
        for (int i = 0; i < r.count; ++i) {
            int const y = r.at[0][i];
            r.at[1][2 * i] = 128;
            r.at[1][2 * i + 1] = static_cast<unsigned char>(c.option ? compressed(y) : y);
        }
}

void uyvy_to_ycbcrx(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 4})))
        widen_to_444(r.at[0], nullptr, r.at[1], r.count, false);
}

// Expansion concerns the key's luma, which is the alpha, and leaves the picture's own luma.
void key_to_ya_uv(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 2, 2, 1}))) {
        for (int i = 0; i < r.count; ++i) {
            int const key = r.at[1][2 * i + 1];
            r.at[2][2 * i] = r.at[0][2 * i + 1];
            r.at[2][2 * i + 1] = static_cast<unsigned char>(c.option ? expanded(key) : key);
        }
        pick_chroma(r.at[0], r.at[3], r.count);
    }
}

void alpha_to_ya_uv(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1, 2, 1}))) {
        for (int i = 0; i < r.count; ++i) {
            r.at[2][2 * i] = r.at[0][2 * i + 1];
            r.at[2][2 * i + 1] = r.at[1][i];
        }
        pick_chroma(r.at[0], r.at[3], r.count);
    }
}

void composite_over_black(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1, 2})))
        composite_over_black(r.at[0], r.at[1], r.at[2], r.count);
}

void uyvy_a_to_ycbcra(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1, 4})))
        widen_to_444(r.at[0], r.at[1], r.at[2], r.count, false);
}

void uyvy_a_to_crcbya(call const& c)
{
    for (run const& r : runs_of(c, is_joined(c, {2, 1, 4})))
        uyvy_a_to_crcbya(r.at[0], r.at[1], r.at[2], r.count);
}

} // namespace quillo::conversions::reference
