// A video frame of the fake host: bottom row first in memory, in an allocation of exactly its size.
#pragma once

#include <atomic>
#include <vector>

#include "host/adapter.h"

namespace quillo::test {

class fake_picture
{
  public:
    // row_bytes 0: tight. Negative: the top row first, and the address that of the bottom row, the last in memory.
    fake_picture(PrPixelFormat format, int width, int height, int row_bytes = 0);
    fake_picture(fake_picture const&) = delete;
    fake_picture& operator=(fake_picture const&) = delete;

    PPixHand hand() { return &pointer; }
    static fake_picture& of(PPixHand hand);

    // Row y from the top, as a viewer sees it.
    unsigned char* row(int y);
    // Fills every pixel with values that tell the place, and byte 3 with alpha.
    void paint(unsigned char alpha);

    char const* name = "picture";
    PrPixelFormat format;
    prRect bounds;
    csSDK_int32 row_bytes;
    csSDK_uint32 aspect_num = 1;
    csSDK_uint32 aspect_den = 1;
    std::atomic<int> disposed{0}; // once, when all is well
    char* address = nullptr;      // what GetPixels answers: the bottom row

  private:
    // The host's record, and the way back from it.
    struct record
    {
        PPix pix;
        fake_picture* owner;
    };

    record host_record;
    PPix* pointer;
    std::vector<unsigned char> memory;
    int width;
    int height;
};

} // namespace quillo::test
