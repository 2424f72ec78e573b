// Pictures on their way to the publisher, through the five functions of the interface.
#include "tests/sender/open/guarded_memory.h"
#include "tests/sender/open/sender_fixture.h"

namespace quillo::test {

using record = fake_publisher::record;

namespace {

constexpr std::size_t slots = 12;

void send(sender_ptr const& sender, test_frame const& frame)
{
    Quillolib_send_send_video_async(sender.get(), &frame.record);
}

void flush(sender_ptr const& sender) { Quillolib_send_send_video(sender.get(), nullptr); }

class pictures : public sender_test
{
  protected:
    fake_publisher publisher{folder.path(), {.want_video = true}};

    bool arrived(std::size_t count)
    {
        return publisher.wait_until([&](record const& seen) { return seen.pictures.size() >= count; });
    }
    bool connected()
    {
        return publisher.wait_until([](record const& seen) { return !seen.hellos.empty(); });
    }
    // From now on the publisher keeps what it gets, and it has got one picture in each slot.
    bool take_every_slot(sender_ptr const& sender, test_frame const& frame)
    {
        publisher.behave([](auto& how) { how.give_back = false; });
        for (std::size_t count = 1; count <= slots; ++count) {
            send(sender, frame);
            if (!arrived(count))
                return false;
        }
        return true;
    }
    // The counts, once they speak of so many sends.
    protocol::losses_body counts_after(std::uint64_t sends)
    {
        EXPECT_TRUE(
            publisher.wait_until([&](record const& seen) { return seen.losses && seen.losses->video_sends >= sends; }));
        return publisher.seen().losses.value_or(protocol::losses_body{});
    }
    void TearDown() override { EXPECT_EQ(publisher.seen().violations, std::vector<std::string>{}); }
};

} // namespace

TEST_F(pictures, ArriveByteForByteInEveryLayout)
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
        send(sender, frame);
        ASSERT_TRUE(arrived(++count));
        auto const got = publisher.seen().pictures.back();
        EXPECT_EQ(got.bytes, frame.tight) << count;
        EXPECT_EQ(got.head.format.width, frame.record.width);
        EXPECT_EQ(got.head.format.height, frame.record.height);
        EXPECT_EQ(got.head.format.fourcc, frame.record.fourCC);
        EXPECT_EQ(got.head.format.rate_n, 60000);
        EXPECT_EQ(got.head.format.rate_d, 1001);
        EXPECT_EQ(got.head.format.aspect, 16.0f / 9.0f);
        EXPECT_EQ(got.head.format.frame_format, FrameFormat_progressive);
        EXPECT_EQ(got.head.timecode_100ns, 333667);
        EXPECT_EQ(got.head.index, count - 1);
    }
#ifndef QUILLO_MACOS_SENDER // shared memory cannot be sealed there
    EXPECT_TRUE(publisher.seen().pools_sealed);
#endif
    flush(sender);
}

TEST_F(pictures, CarryTheTimeOfTheCall)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_UYVY};
    auto const before = steady::now().time_since_epoch();
    send(sender, frame);
    auto const after = steady::now().time_since_epoch();
    ASSERT_TRUE(arrived(1));
    std::chrono::nanoseconds const sent{publisher.seen().pictures[0].head.sent_ns};
    EXPECT_GE(sent, before);
    EXPECT_LE(sent, after);
}

TEST_F(pictures, AreFinishedWithOnReturnOfTheBlockingCall)
{
    auto const sender = make_sender();
    test_frame frame{640, 360, SenderFourCC_BGRA};
    send(sender, frame);
    ASSERT_TRUE(arrived(1));
    for (int round = 0; round < 50; ++round) {
        auto const expected = frame.tight;
        Quillolib_send_send_video(sender.get(), &frame.record);
        // Whatever becomes of the buffer now, what was sent stays.
        std::fill(frame.memory.begin(), frame.memory.end(), static_cast<unsigned char>(round));
        ASSERT_TRUE(arrived(2));
        EXPECT_EQ(publisher.seen().pictures.back().bytes, expected);
        std::fill(frame.tight.begin(), frame.tight.end(), static_cast<std::byte>(round));
        publisher.behave([](auto&) {});
        publisher.forget_pictures();
        send(sender, frame);
        ASSERT_TRUE(arrived(1));
    }
}

TEST_F(pictures, AreNotReadAnyMoreAfterTheNextCall)
{
    auto const sender = make_sender();
    test_frame const frame{640, 360, SenderFourCC_UYVY};
    for (int round = 0; round < 100; ++round) {
        guarded_memory memory{frame.memory};
        auto given = frame.record;
        given.data = memory.start();
        Quillolib_send_send_video_async(sender.get(), &given);
        if (round % 2)
            flush(sender);
        else
            send(sender, frame);
        memory.forbid();
    }
}

TEST_F(pictures, AreCountedWhateverBecomesOfThem)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_UYVY};
    send(sender, frame);
    ASSERT_TRUE(arrived(1));
    constexpr std::size_t sends = 500;
    for (std::size_t count = 1; count < sends; ++count) {
        flush(sender);
        send(sender, frame);
    }
    flush(sender);
    auto const counts = counts_after(sends);
    auto const seen = publisher.seen();
    EXPECT_EQ(counts.video_sends, sends);
    EXPECT_EQ(seen.pictures.size() + counts.video_no_slot + counts.video_replaced, sends);
    EXPECT_EQ(counts.video_refused, 0u);
    std::uint64_t last = 0;
    for (auto const& picture : seen.pictures) {
        EXPECT_GE(picture.head.index, last);
        last = picture.head.index;
    }
}

TEST_F(pictures, StayUnreadWhileNobodyWatches)
{
    publisher.behave([](auto& how) { how.want_video = false; });
    auto const sender = make_sender();
    ASSERT_TRUE(connected());
    guarded_memory memory{1280 * 720 * 4};
    test_frame frame{1280, 720, SenderFourCC_BGRA};
    frame.record.data = memory.start();
    memory.forbid();
    for (int count = 0; count < 200; ++count) {
        flush(sender);
        send(sender, frame);
    }
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.video_formats.empty(); }));
    flush(sender);
    auto const seen = publisher.seen();
    EXPECT_EQ(seen.video_formats[0].width, 1280) << "the format is told all the same";
    EXPECT_TRUE(seen.pictures.empty());
    EXPECT_TRUE(seen.pools.empty()) << "no memory is taken for nobody";
    auto const counts = counts_after(200);
    EXPECT_EQ(counts.video_no_slot + counts.video_replaced, 0u) << "nobody lost anything";
}

TEST_F(pictures, ReachSomebodyWhoComesWhileTheHostRests)
{
    publisher.behave([](auto& how) { how.want_video = false; });
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_BGRA, 0, 5};
    send(sender, frame);
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.video_formats.empty(); }));
    for (std::size_t visitor = 1; visitor <= 3; ++visitor) {
        publisher.behave([](auto& how) { how.want_video = true; });
        ASSERT_TRUE(arrived(visitor));
        auto const got = publisher.seen().pictures.back();
        EXPECT_EQ(got.bytes, frame.tight);
        EXPECT_EQ(got.head.repeat, 1u);
        EXPECT_EQ(got.head.index, 0u);
        publisher.behave([](auto& how) { how.want_video = false; });
    }
    flush(sender);
    publisher.behave([](auto& how) { how.want_video = true; });
    test_frame const next{64, 36, SenderFourCC_BGRA, 0, 6};
    send(sender, next);
    ASSERT_TRUE(arrived(4));
    EXPECT_EQ(publisher.seen().pictures.back().bytes, next.tight) << "the one taken back was not shown again";
}

TEST_F(pictures, OfAHostThatGoesOnAreNoRepeats)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_BGRA};
    send(sender, frame);
    ASSERT_TRUE(arrived(1));
    send(sender, frame);
    ASSERT_TRUE(arrived(2));
    EXPECT_EQ(publisher.seen().pictures.back().head.repeat, 0u);
}

TEST_F(pictures, AreLostButNeverWaitedForWithoutASlot)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_UYVY};
    ASSERT_TRUE(take_every_slot(sender, frame));
    constexpr std::uint64_t more = 100;
    for (std::uint64_t count = 0; count < more; ++count) {
        send(sender, frame);
        flush(sender);
    }
    auto const counts = counts_after(slots + more);
    EXPECT_EQ(counts.video_no_slot + counts.video_replaced, more);
    EXPECT_GE(counts.video_no_slot, 1u);
    EXPECT_EQ(publisher.seen().pictures.size(), slots);
}

TEST_F(pictures, GoAsSoonAsASlotIsGivenBack)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_UYVY};
    ASSERT_TRUE(take_every_slot(sender, frame));
    test_frame const one_more{64, 36, SenderFourCC_UYVY, 0, 5};
    send(sender, one_more);
    auto const pool = publisher.seen().pools.back().pool_id;
    // Slots that are not lent, and pools that are not there, change nothing.
    for (auto const& wrong : {protocol::release_body{pool, slots}, {pool, 0xFFFFFFFF}, {pool + 1, 0}, {pool - 1, 0}})
        publisher.send(protocol::message::release, bytes_of(wrong));
    publisher.send(protocol::message::release, bytes_of(protocol::release_body{pool, 2}));
    ASSERT_TRUE(arrived(slots + 1));
    auto const got = publisher.seen().pictures.back();
    EXPECT_EQ(got.head.slot, 2u);
    EXPECT_EQ(got.bytes, one_more.tight);
}

TEST_F(pictures, GetABiggerPoolWhenTheyNeedOne)
{
    auto const sender = make_sender();
    test_frame const small{8, 8, SenderFourCC_BGRX};
    ASSERT_TRUE(take_every_slot(sender, small));
    test_frame const big{320, 240, SenderFourCC_UYVA};
    send(sender, big);
    ASSERT_TRUE(arrived(slots + 1));
    auto const seen = publisher.seen();
    EXPECT_EQ(seen.pictures.back().bytes, big.tight);
    ASSERT_EQ(seen.pools.size(), 2u);
    EXPECT_EQ(seen.pools[0].slots, slots);
    EXPECT_EQ(seen.pools[0].slot_bytes, 4096u);
    EXPECT_EQ(seen.pools[1].slot_bytes, (320u * 240 * 3 + 4095) / 4096 * 4096);
    // A small one in between uses what is there.
    send(sender, small);
    ASSERT_TRUE(arrived(slots + 2));
    EXPECT_EQ(publisher.seen().pools.size(), 2u);
}

TEST_F(pictures, FollowEveryChangeOfFormat)
{
    publisher.behave([](auto& how) { how.want_video = false; });
    auto const sender = make_sender();
    for (int side = 8; side < 16; ++side) {
        test_frame const frame{side * 2, side, SenderFourCC_UYVY};
        Quillolib_send_send_video(sender.get(), &frame.record);
        ASSERT_TRUE(publisher.wait_until([&](record const& seen) {
            return !seen.video_formats.empty() && seen.video_formats.back().height == side;
        }));
    }
}

TEST_F(pictures, ThatAreNoneDoNoHarm)
{
    auto const sender = make_sender();
    test_frame const frame{64, 36, SenderFourCC_UYVY};
    send(sender, frame);
    ASSERT_TRUE(arrived(1));
    std::uint64_t bad = 0;
    for (auto const number : {0, -1, -2147483647 - 1, 2147483647, 65536, 16385})
        for (auto const place : {&SenderVideoFrame::width, &SenderVideoFrame::height, &SenderVideoFrame::frameRateN,
                                 &SenderVideoFrame::frameRateD, &SenderVideoFrame::lineStride}) {
            auto given = frame.record;
            given.*place = number;
            if (std::holds_alternative<open::picture>(open::check(given)))
                continue;
            Quillolib_send_send_video_async(sender.get(), &given);
            Quillolib_send_send_video(sender.get(), &given);
            bad += 2;
        }
    EXPECT_GT(bad, 20u);
    EXPECT_EQ(counts_after(1 + bad).video_refused, bad);
    EXPECT_EQ(publisher.seen().pictures.size(), 1u);
    send(sender, frame);
    ASSERT_TRUE(arrived(2));
}

} // namespace quillo::test
