#include "tools/stand_in_host/host_time.h"
#include "tools/stand_in_host/suites/suites.h"

#include <cmath>

namespace quillo::stand_in {

namespace {

prSuiteError of_frame(PrVideoFrameRates rate, PrTime* result)
{
    static constexpr frame_rate rates[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001},
                                           {30, 1},       {50, 1}, {60000, 1001}, {60, 1}};
    if (rate < kVideoFrameRate_24Drop || rate > kVideoFrameRate_60)
        return static_cast<prSuiteError>(suiteError_InvalidParms);
    *result = frame_ticks(rates[rate - kVideoFrameRate_24Drop]);
    return suiteError_NoError;
}

prSuiteError of_sample(float rate, PrTime* result)
{
    if (!(rate > 0))
        return static_cast<prSuiteError>(suiteError_InvalidParms);
    double const exact = static_cast<double>(ticks_per_second) / static_cast<double>(rate);
    *result = std::llround(exact);
    return std::floor(exact) == exact ? suiteError_NoError : suiteError_TimeRoundedAudioRate;
}

} // namespace

void const* time_suite()
{
    static PrSDKTimeSuite const table = [] {
        PrSDKTimeSuite t{};
        t.GetTicksPerSecond = [](PrTime* result) {
            *result = ticks_per_second;
            return prSuiteError{suiteError_NoError};
        };
        t.GetTicksPerVideoFrame = of_frame;
        t.GetTicksPerAudioSample = of_sample;
        return t;
    }();
    return &table;
}

} // namespace quillo::stand_in
