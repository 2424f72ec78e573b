// The copy of a picture that the host's thread and the hand-over thread make together.
#include "sender/open/mailbox.h"
#include "tests/sender/open/sender_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <span>
#include <thread>

namespace quillo::test {

using open::mailbox;
using open::picture;
using open::shared_copy;
using open::slot_pool;

// Several bands, and a last one that is shorter.
constexpr int width = 1280, height = 615;

TEST(shared_copy, IsWholeWhenAllWhoWorkedOnItAreDone)
{
    for (auto const fourcc : {SenderFourCC_UYVA, SenderFourCC_BGRA}) {
        test_frame const frame{width, height, fourcc, 8};
        auto const source = std::get<picture>(open::check(frame.record));
        for (int const workers : {1, 2, 3}) {
            std::vector<std::byte> copied(source.bytes());
            shared_copy copy{source, copied.data()};
            std::vector<std::thread> threads;
            for (int worker = 0; worker < workers; ++worker)
                threads.emplace_back([&] { copy.work(); });
            for (auto& thread : threads)
                thread.join();
            EXPECT_EQ(copied, frame.tight) << workers;
        }
    }
}

TEST(shared_copy, LeavesNothingToWhoComesLate)
{
    test_frame frame{width, height, SenderFourCC_UYVY};
    auto const source = std::get<picture>(open::check(frame.record));
    std::vector<std::byte> copied(source.bytes());
    shared_copy copy{source, copied.data()};
    copy.work();
    std::ranges::fill(frame.memory, static_cast<unsigned char>(0xEE));
    copy.work();
    EXPECT_EQ(copied, frame.tight) << "nothing is read again: it is not ours any more";
}

// A host writes the next picture into the same memory as soon as its call has returned.
TEST(mailbox, APictureIsWholeHoweverTheTwoThreadsMeet)
{
    test_frame const frame{width, height, SenderFourCC_UYVY};
    auto memory = frame.memory;
    auto record = frame.record;
    record.data = memory.data();
    auto const source = std::get<picture>(open::check(record));

    mailbox box{[] {}};
    auto const pool = std::make_shared<slot_pool>(source.bytes());
    box.set_wants(true, false);
    box.set_pool(pool);
    for (int round = 0; round < 100; ++round) {
        memory = frame.memory;
        box.hold(source, round, 0);
        std::latch both{2};
        std::thread hand_over{[&] {
            both.arrive_and_wait();
            box.copy_waiting();
        }};
        both.arrive_and_wait();
        if (round % 2)
            std::this_thread::sleep_for(std::chrono::microseconds{10 * round});
        box.take_back();
        std::ranges::fill(memory, static_cast<unsigned char>(0xEE));
        hand_over.join();

        auto const copied = box.next_copied();
        ASSERT_TRUE(copied) << round;
        EXPECT_EQ(copied->held.timecode_100ns, round);
        ASSERT_TRUE(std::ranges::equal(std::span{pool->slot(copied->slot), source.bytes()}, frame.tight)) << round;
        EXPECT_FALSE(box.next_copied()) << "once only";
        box.give_back(copied->slot);
    }
    EXPECT_EQ(box.totals().video_no_slot, 0u);
    EXPECT_EQ(box.totals().video_replaced, 0u);
}

} // namespace quillo::test
