#include "tests/support/fake_host/fake_picture.h"

#include <cstdlib>

namespace quillo::test {

fake_picture::fake_picture(PrPixelFormat its_format, int its_width, int its_height, int its_row_bytes)
    : format(its_format), bounds{0, 0, static_cast<csSDK_int16>(its_height), static_cast<csSDK_int16>(its_width)},
      row_bytes(its_row_bytes ? its_row_bytes : 4 * its_width), host_record{{}, this}, pointer(&host_record.pix),
      width(its_width), height(its_height)
{
    memory.resize(static_cast<std::size_t>(std::abs(row_bytes)) * static_cast<std::size_t>(height));
    std::size_t const bottom = row_bytes < 0 ? memory.size() - static_cast<std::size_t>(-row_bytes) : 0;
    address = memory.empty() ? nullptr : reinterpret_cast<char*>(memory.data() + bottom);
}

fake_picture& fake_picture::of(PPixHand hand) { return *reinterpret_cast<record*>(*hand)->owner; }

unsigned char* fake_picture::row(int y)
{
    return reinterpret_cast<unsigned char*>(address) + static_cast<std::ptrdiff_t>(height - 1 - y) * row_bytes;
}

void fake_picture::paint(unsigned char alpha)
{
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            unsigned char* const pixel = row(y) + 4 * x;
            pixel[0] = static_cast<unsigned char>(x * 7 + y * 13);
            pixel[1] = static_cast<unsigned char>(x * 3 + y * 29 + 1);
            pixel[2] = static_cast<unsigned char>(x * 11 + y * 5 + 2);
            pixel[3] = alpha;
        }
    }
}

} // namespace quillo::test
