// Stock receivers on the loopback watch a publisher in this process.
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/running_publisher.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace quillo::testing {
namespace {

using over = rtsp_receiver::over;
using decode = rtsp_receiver::decode;

std::vector<unsigned char> fill_of(protocol::video_format_body const& format, std::vector<unsigned char> const& picture)
{
    auto const pixels = static_cast<std::size_t>(format.width * format.height);
    if (format.fourcc == SenderFourCC_UYVY || format.fourcc == SenderFourCC_UYVA)
        return {picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(pixels * 2)};
    std::vector<unsigned char> fill;
    for (std::size_t k = 0; k < pixels; ++k)
        fill.insert(fill.end(), {picture[k * 4], picture[k * 4 + 1], picture[k * 4 + 2]});
    return fill;
}

std::uint64_t number_in(std::vector<unsigned char> const& bytes) { return bytes[0] + 256u * bytes[1]; }

class raw_formats : public ::testing::TestWithParam<std::uint32_t>
{
};

TEST_P(raw_formats, arrive_byte_for_byte)
{
    running_publisher publisher;
    auto const format = video_format(322, 90, GetParam(), 30000, 1001);
    live_sender const sender{publisher.socket(), "Raw Bytes", 1, format, noise_picture};
    rtsp_receiver receiver{publisher.url("/raw-bytes/raw"), over::tcp, decode::raw};
    receiver.start();
    bool const bgr = GetParam() == SenderFourCC_BGRA || GetParam() == SenderFourCC_BGRX;
    int compared = 0;
    while (compared < 20) {
        auto const got = receiver.wait_for_picture();
        ASSERT_TRUE(got);
        ASSERT_EQ(got->width, 322);
        ASSERT_EQ(got->height, 90);
        ASSERT_EQ(got->format, bgr ? "BGR" : "UYVY");
        ASSERT_EQ(got->bytes, fill_of(format, noise_picture(format, number_in(got->bytes))));
        ++compared;
    }
}

INSTANTIATE_TEST_SUITE_P(all, raw_formats,
                         ::testing::Values(SenderFourCC_UYVY, SenderFourCC_UYVA, SenderFourCC_BGRX, SenderFourCC_BGRA));

} // namespace
} // namespace quillo::testing
