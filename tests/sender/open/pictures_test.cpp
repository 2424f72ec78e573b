// Pictures on their way to the publisher, through the five functions of the interface.
#include "tests/sender/open/sender_fixture.h"

#include <cmath>
#include <limits>

namespace quillo::test {

namespace {

using record = fake_publisher::record;

class pictures : public sender_test
{
  protected:
    fake_publisher publisher{folder.path(), {.want_video = true}};

    void expect_arrives(test_frame const& frame, std::size_t count)
    {
        ASSERT_TRUE(publisher.wait_until([&](record const& seen) { return seen.pictures.size() >= count; }));
        auto const seen = publisher.seen();
        EXPECT_EQ(seen.pictures[count - 1].bytes, frame.tight);
        EXPECT_EQ(seen.pictures[count - 1].head.format.width, frame.record.width);
        EXPECT_EQ(seen.pictures[count - 1].head.format.height, frame.record.height);
        EXPECT_EQ(seen.pictures[count - 1].head.format.fourcc, frame.record.fourCC);
        EXPECT_EQ(seen.violations, std::vector<std::string>{});
    }
};

} // namespace

TEST_F(pictures, ArriveByteForByteWithEveryLayout)
{
    auto const sender = make_sender();
    std::vector<test_frame> frames;
    frames.emplace_back(64, 36, SenderFourCC_UYVY);
    frames.emplace_back(64, 36, SenderFourCC_UYVA);
    frames.emplace_back(63, 35, SenderFourCC_BGRA);
    frames.emplace_back(8, 8, SenderFourCC_BGRX);
    frames.emplace_back(64, 36, SenderFourCC_UYVY, 22, 2);
    frames.emplace_back(64, 36, SenderFourCC_UYVA, 6, 3);
    frames.emplace_back(33, 7, SenderFourCC_BGRA, 5, 4, true);
    frames.emplace_back(64, 36, SenderFourCC_UYVY, 0, 5, true);
    frames.emplace_back(2, 1, SenderFourCC_UYVA, 40, 6);
    frames.emplace_back(1, 1, SenderFourCC_BGRX, 0, 7);
    frames.emplace_back(1920, 1080, SenderFourCC_UYVA, 0, 8);
    std::size_t count = 0;
    for (auto const& frame : frames) {
        Quillolib_send_send_video_async(sender.get(), &frame.record);
        expect_arrives(frame, ++count);
    }
    EXPECT_TRUE(publisher.seen().pools_sealed);
    Quillolib_send_send_video(sender.get(), nullptr);
}

} // namespace quillo::test
