#include "tests/support/reference/reference.h"

namespace quillo::conversions::reference {

void copy_bytes(unsigned char const* src, unsigned char* dst, int count)
{
    for (int i = 0; i < count; ++i)
        dst[i] = src[i];
}

bool copy_pixels(unsigned char const* src, unsigned char* dst, int count)
{
    bool opaque = true;
    for (int i = 0; i < count; ++i) {
        copy_bytes(src + 4 * i, dst + 4 * i, 4);
        if (src[4 * i + 3] != 255)
            opaque = false;
    }
    return opaque;
}

void copy_plane(call const& c, int bytes_per_pixel)
{
    call bytes = c;
    bytes.width = c.width * bytes_per_pixel;
    bool const joined = c.height == 1 || (c.planes[0].stride == bytes.width && c.planes[1].stride == bytes.width);
    for (run const& r : runs_of(bytes, joined))
        copy_bytes(r.at[0], r.at[1], r.count);
}

void copy_with_alpha_test(call const& c)
{
    if (!c.all_opaque) {
        copy_plane(c, 4);
        return;
    }
    bool const joined = c.height == 1 || (c.planes[0].stride == c.width * 4 && c.planes[1].stride == c.width * 4);
    bool opaque = true;
    for (run const& r : runs_of(c, joined))
        if (!copy_pixels(r.at[0], r.at[1], r.count))
            opaque = false;
    *c.all_opaque = opaque;
}

} // namespace quillo::conversions::reference
