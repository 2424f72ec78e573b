// Pulling the audio of a player: set up, start, take buffers, stop. Only while audio is active for the instance.
#pragma once

#include "PrSDKPlayModule.h"
#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"

#define kPrSDKPlayModuleAudioSuite "Premiere Playmod Audio Suite"

#pragma pack(push, 1)

typedef struct pmAudioSettings
{
    float mSampleRate;
    csSDK_int32 mBlockSize;   // samples a channel in one buffer
    csSDK_int64 mReserved[3]; // zero
} pmAudioSettings;

typedef struct pmAudioRange
{
    PrTime mInTime;
    PrTime mOutTime;
    PrTime mStartTime;
    prBool mLoop;
} pmAudioRange;

typedef struct PrSDKPlayModuleAudioSuite
{
    void* InitHostAudio;
    prSuiteError (*InitPluginAudio)(PrPlayID inPlayID, prBool inIsScrubbing, pmAudioSettings const* inSettings);
    prSuiteError (*StartAudio)(PrPlayID inPlayID, pmAudioRange const* inRange, void* inReserved, float inSpeed);
    void* reserved4;
    void* reserved5;
    void* reserved6;
    void* reserved7;
    void* reserved8;
    prSuiteError (*StopAudio)(PrPlayID inPlayID);
    prSuiteError (*GetNextAudioBuffer)(PrPlayID inPlayID, float** inInBuffers, float** outOutBuffers,
                                       unsigned int inNumSampleFrames);
    // One buffer a channel, the plug-in's own. Also tells the sequence time of the first sample delivered.
    prSuiteError (*GetNextAudioBuffer2)(PrPlayID inPlayID, float** inInBuffers, float** outOutBuffers,
                                        unsigned int inNumSampleFrames, PrTime* outTime);
} PrSDKPlayModuleAudioSuite;

#pragma pack(pop)

static_assert(sizeof(pmAudioSettings) == 32 && offsetof(pmAudioSettings, mSampleRate) == 0);
static_assert(offsetof(pmAudioSettings, mBlockSize) == 4 && offsetof(pmAudioSettings, mReserved) == 8);
static_assert(sizeof(pmAudioRange) == 28 && offsetof(pmAudioRange, mInTime) == 0);
static_assert(offsetof(pmAudioRange, mOutTime) == 8 && offsetof(pmAudioRange, mStartTime) == 16);
static_assert(offsetof(pmAudioRange, mLoop) == 24);
static_assert(sizeof(PrSDKPlayModuleAudioSuite) == 88 && offsetof(PrSDKPlayModuleAudioSuite, InitHostAudio) == 0);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, InitPluginAudio) == 8);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, StartAudio) == 16);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, reserved4) == 24);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, reserved5) == 32);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, reserved6) == 40);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, reserved7) == 48);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, reserved8) == 56);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, StopAudio) == 64);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, GetNextAudioBuffer) == 72);
static_assert(offsetof(PrSDKPlayModuleAudioSuite, GetNextAudioBuffer2) == 80);
