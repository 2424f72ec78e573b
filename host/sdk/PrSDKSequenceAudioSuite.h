// Renders the audio of a sequence for an exporter: one float buffer a channel.
#pragma once

#include "PrSDKAudioSuite.h"
#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"

#define kPrSDKSequenceAudioSuite "MediaCore Sequence Audio Suite"

#pragma pack(push, 1)

typedef struct PrSDKSequenceAudioSuite
{
    prSuiteError (*MakeAudioRenderer)(csSDK_uint32 inPluginID, PrTime inStartTime, PrAudioChannelType inChannelType,
                                      PrAudioSampleType inSampleType, float inSampleRate,
                                      csSDK_uint32* outAudioRenderID);
    prSuiteError (*ReleaseAudioRenderer)(csSDK_uint32 inPluginID, csSDK_uint32 inAudioRenderID);
    // The next inFrameCount samples of every channel.
    prSuiteError (*GetAudio)(csSDK_uint32 inAudioRenderID, csSDK_uint32 inFrameCount, float** inBuffer,
                             char inClipAudio);
    prSuiteError (*ResetAudioToBeginning)(csSDK_uint32 inAudioRenderID);
    // The most samples that GetAudio gives at once.
    prSuiteError (*GetMaxBlip)(csSDK_uint32 inAudioRenderID, PrTime inTicksPerFrame, csSDK_uint32* maxBlipSize);
} PrSDKSequenceAudioSuite;

#pragma pack(pop)

static_assert(sizeof(PrSDKSequenceAudioSuite) == 5 * sizeof(void*));
