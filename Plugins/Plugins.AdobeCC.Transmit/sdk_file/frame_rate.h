// Frame durations in host ticks, and as a scale and a sample size: scale / sample size is the rate.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

#include <PrSDKTimeSuite.h>

// A whole number of frames a second gives that number and 1; else the rates of 29.97, 59.94 and 23.976 are recognised.
// Any other duration leaves the outputs as they are.
QUILLO_EXPORTED void ConvertPrTimeToScaleSampleSize(PrSDKTimeSuite const* timeSuite, PrTime ticksPerFrame,
                                                    csSDK_int32* scale, csSDK_int32* sampleSize);

// A pair that is no rate of the host leaves ticksPerFrame as it is. 24, 25, 30, 50 and 60 stand for themselves whatever
// the sample size.
QUILLO_EXPORTED void ConvertScaleSampleSizeToPrTime(PrSDKTimeSuite const* timeSuite, csSDK_int32 scale,
                                                    csSDK_int32 sampleSize, PrTime* ticksPerFrame);
