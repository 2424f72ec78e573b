// Host time, and the suite that tells its units.
#pragma once

#include "PrSDKTypes.h"

// Signed ticks. How many make a second is asked of the suite and does not change while the host runs.
// A frame rate given as PrTime is the number of ticks of one frame.
typedef prInt64 PrTime;

enum PrVideoFrameRates : csSDK_uint32 {
    kVideoFrameRate_24Drop = 1, // 24000/1001
    kVideoFrameRate_24 = 2,
    kVideoFrameRate_PAL = 3,  // 25
    kVideoFrameRate_NTSC = 4, // 30000/1001
    kVideoFrameRate_30 = 5,
    kVideoFrameRate_PAL_HD = 6,  // 50
    kVideoFrameRate_NTSC_HD = 7, // 60000/1001
    kVideoFrameRate_60 = 8,
    kVideoFrameRate_Max = 0xFFFFFFFF
};

#define kPrSDKTimeSuite "Premiere Time Suite"

#pragma pack(push, 1)

typedef struct PrSDKTimeSuite
{
    prSuiteError (*GetTicksPerSecond)(PrTime* outTicksPerSec);
    prSuiteError (*GetTicksPerVideoFrame)(PrVideoFrameRates inVideoFrameRate, PrTime* outTicksPerFrame);
    prSuiteError (*GetTicksPerAudioSample)(float inSampleRate, PrTime* outTicksPerSample);
} PrSDKTimeSuite;

#pragma pack(pop)

static_assert(sizeof(PrTime) == 8 && sizeof(PrVideoFrameRates) == 4);
static_assert(sizeof(PrSDKTimeSuite) == 24 && offsetof(PrSDKTimeSuite, GetTicksPerSecond) == 0);
static_assert(offsetof(PrSDKTimeSuite, GetTicksPerVideoFrame) == 8);
static_assert(offsetof(PrSDKTimeSuite, GetTicksPerAudioSample) == 16);
