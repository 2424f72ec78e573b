// Audio channels and samples. The host exchanges audio as 32-bit floats, one buffer a channel.
#pragma once

#include "PrSDKTypes.h"

enum { kMaxAudioChannelCount = 32 };

enum PrAudioChannelType : csSDK_uint32 {
    kPrAudioChannelType_Mono = 1,
    kPrAudioChannelType_Stereo = 2,
    kPrAudioChannelType_51 = 3,
    kPrAudioChannelType_MaxChannel = 4
};

enum PrAudioChannelLabel : csSDK_uint32 {
    kPrAudioChannelLabel_Discrete = 0,
    kPrAudioChannelLabel_FrontLeft = 100,
    kPrAudioChannelLabel_FrontRight = 101,
    kPrAudioChannelLabel_FrontCenter = 102,
    kPrAudioChannelLabel_LowFrequency = 103,
    kPrAudioChannelLabel_BackLeft = 104,
    kPrAudioChannelLabel_BackRight = 105,
    kPrAudioChannelLabel_BackCenter = 106,
    kPrAudioChannelLabel_FrontLeftOfCenter = 107,
    kPrAudioChannelLabel_FrontRightOfCenter = 108,
    kPrAudioChannelLabel_SideLeft = 109,
    kPrAudioChannelLabel_SideRight = 110,
    kPrAudioChannelLabel_TopCenter = 111
};

enum PrAudioSampleType : csSDK_uint32 {
    kPrAudioSampleType_8BitInt = 1,
    kPrAudioSampleType_8BitTwosInt = 2,
    kPrAudioSampleType_16BitInt = 3,
    kPrAudioSampleType_24BitInt = 4,
    kPrAudioSampleType_32BitInt = 5,
    kPrAudioSampleType_32BitFloat = 6,
    kPrAudioSampleType_64BitFloat = 7
};

static_assert(sizeof(PrAudioChannelType) == 4 && sizeof(PrAudioChannelLabel) == 4 && sizeof(PrAudioSampleType) == 4);
