#include "Plugins/Plugins.AdobeCC.Transmit/latest.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace {

using quillo::latest;

TEST(Latest, IsTheInitialValueBeforeAnythingIsGiven)
{
    latest<int> value;
    EXPECT_EQ(value.take(), 0);
}

TEST(Latest, IsWhatWasGivenLast)
{
    latest<int> value;
    value.give(1);
    EXPECT_EQ(value.take(), 1);
    EXPECT_EQ(value.take(), 1);
    value.give(2);
    value.give(3);
    value.give(4);
    EXPECT_EQ(value.take(), 4);
    value.give(5);
    EXPECT_EQ(value.take(), 5);
    EXPECT_EQ(value.take(), 5);
}

TEST(Latest, ATakenValueStaysWhileOthersAreGiven)
{
    latest<int> value;
    value.give(1);
    int const& taken = value.take();
    for (int i = 2; i < 10; ++i)
        value.give(i);
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(value.take(), 9);
}

TEST(Latest, AcrossThreadsValuesAreWholeAndNeverGoBack)
{
    using record = std::array<long long, 26>;
    constexpr long long last = 200000;
    latest<record> value;
    std::thread giver([&] {
        for (long long i = 1; i <= last; ++i) {
            record next;
            next.fill(i);
            value.give(next);
        }
    });
    long long seen = 0;
    while (seen != last) {
        record const& taken = value.take();
        ASSERT_GE(taken.front(), seen);
        seen = taken.front();
        for (long long const part : taken)
            ASSERT_EQ(part, seen);
    }
    giver.join();
}

} // namespace
