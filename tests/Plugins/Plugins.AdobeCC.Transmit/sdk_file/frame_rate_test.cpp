#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/frame_rate.h"

#include "tools/sdk_file_host/exporter_host.h"

#include <gtest/gtest.h>

namespace {

using quillo::sdk_file::time_suite;

struct pair_of_rate
{
    csSDK_int32 scale = -7;
    csSDK_int32 sample_size = -8;
    bool operator==(pair_of_rate const&) const = default;
};

pair_of_rate from_ticks(PrTime ticks)
{
    pair_of_rate found;
    ConvertPrTimeToScaleSampleSize(&time_suite(), ticks, &found.scale, &found.sample_size);
    return found;
}

PrTime to_ticks(csSDK_int32 scale, csSDK_int32 sample_size)
{
    PrTime ticks = -9;
    ConvertScaleSampleSizeToPrTime(&time_suite(), scale, sample_size, &ticks);
    return ticks;
}

TEST(TicksToScale, WholeRates)
{
    EXPECT_EQ(from_ticks(10584000000), (pair_of_rate{24, 1}));
    EXPECT_EQ(from_ticks(10160640000), (pair_of_rate{25, 1}));
    EXPECT_EQ(from_ticks(8467200000), (pair_of_rate{30, 1}));
    EXPECT_EQ(from_ticks(5080320000), (pair_of_rate{50, 1}));
    EXPECT_EQ(from_ticks(4233600000), (pair_of_rate{60, 1}));
    EXPECT_EQ(from_ticks(254016000000), (pair_of_rate{1, 1}));
    EXPECT_EQ(from_ticks(254016000000 / 15), (pair_of_rate{15, 1}));
}

TEST(TicksToScale, RecognisedInexactRates)
{
    EXPECT_EQ(from_ticks(8475667200), (pair_of_rate{30000, 1001}));
    EXPECT_EQ(from_ticks(4237833600), (pair_of_rate{60000, 1001}));
    EXPECT_EQ(from_ticks(10594584000), (pair_of_rate{24000, 1001}));
}

TEST(TicksToScale, OutputsStayUntouchedForOthers)
{
    EXPECT_EQ(from_ticks(8475667201), pair_of_rate{});
    EXPECT_EQ(from_ticks(254016000001), pair_of_rate{});
    EXPECT_EQ(from_ticks(0), pair_of_rate{});
}

// A host in which all three codes have one duration: the matches follow each other, the last one stays.
TEST(TicksToScale, LaterMatchesReplaceEarlierOnes)
{
    PrSDKTimeSuite suite = time_suite();
    suite.GetTicksPerVideoFrame = [](PrVideoFrameRates, PrTime* ticks) -> prSuiteError {
        *ticks = 8475667201;
        return 0;
    };
    pair_of_rate found;
    ConvertPrTimeToScaleSampleSize(&suite, 8475667201, &found.scale, &found.sample_size);
    EXPECT_EQ(found, (pair_of_rate{24000, 1001}));

    // Codes 4 and 7 alike, code 1 different: the one set by code 7 stays.
    suite.GetTicksPerVideoFrame = [](PrVideoFrameRates rate, PrTime* ticks) -> prSuiteError {
        *ticks = rate == kVideoFrameRate_24Drop ? 1 : 8475667201;
        return 0;
    };
    ConvertPrTimeToScaleSampleSize(&suite, 8475667201, &found.scale, &found.sample_size);
    EXPECT_EQ(found, (pair_of_rate{60000, 1001}));
}

TEST(ScaleToTicks, EveryRow)
{
    for (csSDK_int32 const any : {1, 2, 1001, 0, -1}) {
        EXPECT_EQ(to_ticks(24, any), 10584000000);
        EXPECT_EQ(to_ticks(25, any), 10160640000);
        EXPECT_EQ(to_ticks(30, any), 8467200000);
        EXPECT_EQ(to_ticks(50, any), 5080320000);
        EXPECT_EQ(to_ticks(60, any), 4233600000);
    }
    EXPECT_EQ(to_ticks(2397, 100), 10594584000);
    EXPECT_EQ(to_ticks(23976, 1000), 10594584000);
    EXPECT_EQ(to_ticks(24000, 1001), 10594584000);
    EXPECT_EQ(to_ticks(2997, 100), 8475667200);
    EXPECT_EQ(to_ticks(29970, 1000), 8475667200);
    EXPECT_EQ(to_ticks(30000, 1001), 8475667200);
    EXPECT_EQ(to_ticks(5994, 100), 4237833600);
    EXPECT_EQ(to_ticks(60000, 1001), 4237833600);
}

TEST(ScaleToTicks, TimeStaysUntouchedForOthers)
{
    EXPECT_EQ(to_ticks(59940, 1000), -9); // not in the table, unlike 29970 and 23976
    EXPECT_EQ(to_ticks(30000, 1000), -9);
    EXPECT_EQ(to_ticks(2397, 1000), -9);
    EXPECT_EQ(to_ticks(48, 1), -9);
    EXPECT_EQ(to_ticks(0, 0), -9);
}

} // namespace
