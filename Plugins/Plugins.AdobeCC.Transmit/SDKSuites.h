// The host's suites that the plug-in object acquires and every instance gets a copy of. Null where the host had none.
#pragma once

#include "host/adapter.h"

struct SDKSuites
{
    SPBasicSuite* basic = nullptr;
    quillo::host::playmod_audio_suite const* audio = nullptr;
    PrSDKPPixSuite const* ppix = nullptr;
    PrSDKTimeSuite const* time = nullptr;
    PrSDKAppInfoSuite const* app_info = nullptr;
};
