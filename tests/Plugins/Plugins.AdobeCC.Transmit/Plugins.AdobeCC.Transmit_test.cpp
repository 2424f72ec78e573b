#include <array>
#include <cstring>
#include <stdexcept>

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

class Entry : public TransmitTest
{
};

// A host's table is longer than the one that the plug-in knows.
constexpr std::size_t host_slots = 19;

TEST_F(Entry, LoadFillsTwelveSlotsInOrderAndNoMore)
{
    std::array<void*, host_slots> slots{};
    tmModule table;
    std::memcpy(&table, slots.data(), sizeof table);
    std::memset(slots.data(), 0xA5, sizeof slots);
    auto const untouched = slots;

    // Interface version and suites do not matter.
    auto* const record = static_cast<tmModule*>(static_cast<void*>(slots.data()));
    EXPECT_EQ(module->entry()(-7, kPrTrue, nullptr, record), 0);

    std::memcpy(&table, slots.data(), sizeof table);
    std::array<void*, 12> const by_name = {
        reinterpret_cast<void*>(table.Startup),
        reinterpret_cast<void*>(table.Shutdown),
        reinterpret_cast<void*>(table.SetupDialog),
        reinterpret_cast<void*>(table.NeedsReset),
        reinterpret_cast<void*>(table.CreateInstance),
        reinterpret_cast<void*>(table.DisposeInstance),
        reinterpret_cast<void*>(table.QueryAudioMode),
        reinterpret_cast<void*>(table.QueryVideoMode),
        reinterpret_cast<void*>(table.ActivateDeactivate),
        reinterpret_cast<void*>(table.StartPlaybackClock),
        reinterpret_cast<void*>(table.StopPlaybackClock),
        reinterpret_cast<void*>(table.PushVideo),
    };
    for (std::size_t slot = 0; slot < host_slots; ++slot) {
        if (slot < by_name.size()) {
            EXPECT_EQ(slots[slot], by_name[slot]) << slot;
            EXPECT_NE(slots[slot], untouched[slot]) << slot;
            for (std::size_t other = 0; other < slot; ++other)
                EXPECT_NE(slots[slot], slots[other]) << slot << " and " << other;
        } else {
            EXPECT_EQ(slots[slot], untouched[slot]) << slot;
        }
    }
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(Entry, UnloadReturnsZeroAndLeavesTheRecordUnwritten)
{
    std::array<unsigned char, 8 * host_slots> bytes;
    bytes.fill(0x5A);
    auto const untouched = bytes;
    auto* const record = reinterpret_cast<tmModule*>(bytes.data());
    EXPECT_EQ(module->entry()(1, kPrFalse, host.suites(), record), 0);
    EXPECT_EQ(bytes, untouched);
    EXPECT_EQ(module->entry()(1, kPrFalse, nullptr, nullptr), 0);
}

TEST_F(Entry, StartupKeepsThePlugInInTheHostsRecord)
{
    EXPECT_EQ(functions.Startup(&parms, &info), 0);
    EXPECT_NE(plugin_data(), nullptr);
    tmStdParms expected{};
    expected.ioPrivatePluginData = plugin_data();
    expected.piSuites = host.suites();
    EXPECT_EQ(std::memcmp(&parms, &expected, sizeof parms), 0);
}

TEST_F(Entry, ShutdownTwiceFindsNothingTheSecondTime)
{
    start_up();
    EXPECT_EQ(functions.Shutdown(&parms), 0);
    EXPECT_EQ(plugin_data(), nullptr);
    log.clear();
    EXPECT_EQ(functions.Shutdown(&parms), 0);
    EXPECT_EQ(plugin_data(), nullptr);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(Entry, CreateInstanceKeepsTheInstanceInTheHostsRecord)
{
    start_up();
    EXPECT_EQ(functions.CreateInstance(&parms, &instance), 0);
    EXPECT_NE(instance_data(), nullptr);
    EXPECT_NE(instance_data(), plugin_data());
}

TEST_F(Entry, DisposeInstanceAlwaysLeavesThePointerNull)
{
    start_up();
    create_instance();
    EXPECT_EQ(functions.DisposeInstance(&parms, &instance), 0);
    EXPECT_EQ(instance_data(), nullptr);
    EXPECT_EQ(functions.DisposeInstance(&parms, &instance), 0);
    EXPECT_EQ(instance_data(), nullptr);
}

TEST_F(Entry, AFailedStartupLetsTheExceptionThroughAndStoresNothing)
{
    if (!module->exceptions_cross())
        GTEST_SKIP() << "exceptions end inside this back end";
    host.on_get_basic = [] { throw std::runtime_error("no suites"); };
    EXPECT_THROW(functions.Startup(&parms, &info), std::runtime_error);
    EXPECT_EQ(plugin_data(), nullptr);

    host.on_get_basic = nullptr;
    sender.on_create = [] { throw std::runtime_error("no sender"); };
    EXPECT_THROW(functions.Startup(&parms, &info), std::runtime_error);
    EXPECT_EQ(plugin_data(), nullptr);
}

TEST_F(Entry, AFailedInstanceLetsTheExceptionThroughAndStoresNothing)
{
    if (!module->exceptions_cross())
        GTEST_SKIP() << "exceptions end inside this back end";
    start_up();
    host.on_get_ticks = [] { throw std::runtime_error("no time"); };
    EXPECT_THROW(functions.CreateInstance(&parms, &instance), std::runtime_error);
    EXPECT_EQ(instance_data(), nullptr);
    host.on_get_ticks = nullptr;
    EXPECT_EQ(functions.CreateInstance(&parms, &instance), 0);
}

TEST_F(Entry, TheGreatestCommonDivisorIsExported)
{
    auto const gcd = reinterpret_cast<long long (*)(long long, long long)>(module->exported("_Z3gcdxx"));
    ASSERT_NE(gcd, nullptr);
    EXPECT_EQ(gcd(254016000000, 10000000), 2000000);
    EXPECT_EQ(gcd(10000000, 254016000000), 2000000);
    EXPECT_EQ(gcd(7, 0), 7);
    EXPECT_EQ(gcd(0, 7), 7);
    EXPECT_EQ(gcd(0, 0), 0);
    EXPECT_EQ(gcd(17, 5), 1);
    EXPECT_EQ(gcd(-12, 8), -4);
}

TEST_F(Entry, HelloWorldWritesALine)
{
    auto const hello =
        reinterpret_cast<void (*)(char const*)>(module->exported("_ZN23Quillo_Transmit_AdobeCC10HelloWorldEPKc"));
    ASSERT_NE(hello, nullptr);
    testing::internal::CaptureStdout();
    hello("a sign of life");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a sign of life\n");
}

} // namespace

} // namespace quillo::test
