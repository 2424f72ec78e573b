#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/frame_rate.h"

namespace {

struct rate
{
    csSDK_int32 scale;
    csSDK_int32 sample_size; // 0: any
    PrVideoFrameRates code;
};

constexpr rate inexact_rates[] = {
    {30000, 1001, kVideoFrameRate_NTSC}, {60000, 1001, kVideoFrameRate_NTSC_HD}, {24000, 1001, kVideoFrameRate_24Drop}};

constexpr rate known_rates[] = {
    {24, 0, kVideoFrameRate_24},           {25, 0, kVideoFrameRate_PAL},          {30, 0, kVideoFrameRate_30},
    {50, 0, kVideoFrameRate_PAL_HD},       {60, 0, kVideoFrameRate_60},           {2397, 100, kVideoFrameRate_24Drop},
    {23976, 1000, kVideoFrameRate_24Drop}, {24000, 1001, kVideoFrameRate_24Drop}, {2997, 100, kVideoFrameRate_NTSC},
    {29970, 1000, kVideoFrameRate_NTSC},   {30000, 1001, kVideoFrameRate_NTSC},   {5994, 100, kVideoFrameRate_NTSC_HD},
    {60000, 1001, kVideoFrameRate_NTSC_HD}};

PrTime ticks_of(PrSDKTimeSuite const& suite, PrVideoFrameRates code)
{
    PrTime ticks = 0;
    suite.GetTicksPerVideoFrame(code, &ticks);
    return ticks;
}

} // namespace

void ConvertPrTimeToScaleSampleSize(PrSDKTimeSuite const* timeSuite, PrTime ticksPerFrame, csSDK_int32* scale,
                                    csSDK_int32* sampleSize)
{
    PrTime ticks_per_second = 0;
    timeSuite->GetTicksPerSecond(&ticks_per_second);
    if (ticksPerFrame == 0)
        return;
    if (ticks_per_second % ticksPerFrame == 0) {
        *scale = static_cast<csSDK_int32>(ticks_per_second / ticksPerFrame);
        *sampleSize = 1;
        return;
    }
    for (rate const& candidate : inexact_rates)
        if (ticks_of(*timeSuite, candidate.code) == ticksPerFrame) {
            *scale = candidate.scale;
            *sampleSize = candidate.sample_size;
        }
}

void ConvertScaleSampleSizeToPrTime(PrSDKTimeSuite const* timeSuite, csSDK_int32 scale, csSDK_int32 sampleSize,
                                    PrTime* ticksPerFrame)
{
    for (rate const& candidate : known_rates)
        if (candidate.scale == scale && (candidate.sample_size == 0 || candidate.sample_size == sampleSize)) {
            timeSuite->GetTicksPerVideoFrame(candidate.code, ticksPerFrame);
            return;
        }
}
