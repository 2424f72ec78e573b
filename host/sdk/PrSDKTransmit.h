// Transmit plug-ins: the records that host and plug-in exchange, and the table of calls.
// Members named in... go from host to plug-in, out... back, io... both ways. The host calls one function of a module at
// a time, on threads of its own choice; the two callbacks may be called on any thread.
#pragma once

#include "PrSDKAudioSuite.h"
#include "PrSDKPixelFormat.h"
#include "PrSDKPlayModule.h"
#include "PrSDKPlugSuites.h"
#include "PrSDKQuality.h"
#include "PrSDKStreamLabel.h"
#include "PrSDKStructs.h"
#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"

// One byte as in the host's other headers; 8 gives natural alignment. The layout checks hold for either.
#ifndef QUILLO_HOST_TRANSMIT_PACK
#define QUILLO_HOST_TRANSMIT_PACK 1
#endif

typedef csSDK_int32 tmResult;
enum {
    tmResult_Success = 0,
    tmResult_ContinueIterate = 1, // one more follows
    tmResult_ErrorUnknown = -1
};

// Moves the host's clock by inRelativeTimeAdjustment ticks, whatever the speed. Not after StopPlaybackClock returned.
typedef void (*tmClockCallback)(void* inContext, PrTime inRelativeTimeAdjustment);
// Reports further frames that did not reach the device.
typedef void (*tmDroppedFrameCallback)(void* inContext, csSDK_int64 inNewDroppedFrames);

#if QUILLO_HOST_TRANSMIT_PACK == 1
#pragma pack(push, 1)
#else
#pragma pack(push, 8)
#endif

typedef struct tmStdParms
{
    csSDK_int32 inPluginIndex;
    PrMemoryPtr ioSerializedPluginData;
    csSDK_size_t ioSerializedPluginDataSize;
    void* ioPrivatePluginData; // the plug-in's own
    piSuitesPtr piSuites;
} tmStdParms;

// The members that later releases append are not declared; hosts tell them by outInterfaceVersion.
typedef struct tmPluginInfo
{
    prPluginID outIdentifier;
    unsigned int outPriority; // the higher wins
    prBool outAudioAvailable;
    prBool outAudioDefaultEnabled;
    prBool outClockAvailable;
    prBool outVideoAvailable;
    prBool outVideoDefaultEnabled;
    prUTF16Char outDisplayName[256]; // zero-terminated
    prBool outHideInUI;
    prBool outHasSetup;
    csSDK_int32 outInterfaceVersion;
} tmPluginInfo;

typedef struct tmInstance
{
    csSDK_int32 inInstanceID;
    PrTimelineID inTimelineID;
    PrPlayID inPlayID;
    prBool inHasAudio;
    csSDK_uint32 inNumChannels;
    PrAudioChannelLabel inChannelLabels[16];
    PrAudioSampleType inAudioSampleType;
    float inAudioSampleRate; // samples a second
    prBool inHasVideo;
    csSDK_int32 inVideoWidth;
    csSDK_int32 inVideoHeight;
    csSDK_int32 inVideoPARNum;
    csSDK_int32 inVideoPARDen;
    PrTime inVideoFrameRate; // ticks a frame
    prFieldType inVideoFieldType;
    void* ioPrivateInstanceData; // the plug-in's own
} tmInstance;

typedef struct tmAudioMode
{
    float outAudioSampleRate;
    csSDK_uint32 outMaxBufferSize; // samples
    csSDK_uint32 outNumChannels;   // at most 16
    PrAudioChannelLabel outChannelLabels[16];
    PrTime outLatency;
    PrSDKString outAudioOutputNames[16];
} tmAudioMode;

// 0 in the sizes and ratios and prFieldsAny mean any. The colour space that later releases append is not declared.
typedef struct tmVideoMode
{
    csSDK_int32 outWidth;
    csSDK_int32 outHeight;
    csSDK_int32 outPARNum;
    csSDK_int32 outPARDen;
    prFieldType outFieldType;
    PrPixelFormat outPixelFormat;
    PrSDKString outStreamLabel;
    PrTime outLatency;
} tmVideoMode;

typedef struct tmPlaybackClock
{
    tmClockCallback inClockCallback;
    void* inCallbackContext; // for both callbacks
    PrTime inStartTime;
    pmPlayMode inPlayMode;
    float inSpeed;
    PrTime inInTime;
    PrTime inOutTime;
    prBool inLoop;
    tmDroppedFrameCallback inDroppedFrameCallback;
    PrTime inAudioOffset;
    PrTime inVideoOffset;
} tmPlaybackClock;

typedef struct tmLabeledFrame
{
    PPixHand inFrame; // the plug-in's from now on, to be disposed once
    PrSDKStreamLabel inStreamLabel;
} tmLabeledFrame;

typedef struct tmPushVideo
{
    PrTime inTime; // negative: show at once
    pmPlayMode inPlayMode;
    PrRenderQuality inQuality;
    tmLabeledFrame const* inFrames; // the host's, during the call
    csSDK_size_t inFrameCount;
} tmPushVideo;

// The functions of a plug-in module, null where it has none. Later releases append more; a plug-in writes its own only.
typedef struct tmModule
{
    tmResult (*Startup)(tmStdParms* ioStdParms, tmPluginInfo* outPluginInfo);
    tmResult (*Shutdown)(tmStdParms* ioStdParms);
    tmResult (*SetupDialog)(tmStdParms* ioStdParms, prParentWnd inParent);
    tmResult (*NeedsReset)(tmStdParms const* inStdParms, prBool* outResetModule);
    tmResult (*CreateInstance)(tmStdParms const* inStdParms, tmInstance* ioInstance);
    tmResult (*DisposeInstance)(tmStdParms const* inStdParms, tmInstance* ioInstance);
    tmResult (*QueryAudioMode)(tmStdParms const* inStdParms, tmInstance const* inInstance,
                               csSDK_int32 inQueryIterationIndex, tmAudioMode* outAudioMode);
    tmResult (*QueryVideoMode)(tmStdParms const* inStdParms, tmInstance const* inInstance,
                               csSDK_int32 inQueryIterationIndex, tmVideoMode* outVideoMode);
    tmResult (*ActivateDeactivate)(tmStdParms const* inStdParms, tmInstance const* inInstance,
                                   PrActivationEvent inActivationEvent, prBool inAudioActive, prBool inVideoActive);
    tmResult (*StartPlaybackClock)(tmStdParms const* inStdParms, tmInstance const* inInstance,
                                   tmPlaybackClock const* inClock);
    tmResult (*StopPlaybackClock)(tmStdParms const* inStdParms, tmInstance const* inInstance);
    tmResult (*PushVideo)(tmStdParms const* inStdParms, tmInstance const* inInstance, tmPushVideo const* inPushVideo);
} tmModule;

#pragma pack(pop)

// The one exported function of a transmit module, called when it is loaded and before it is unloaded.
typedef tmResult (*tmEntryFunc)(csSDK_int32 inInterfaceVersion, prBool inLoadModule, piSuitesPtr piSuites,
                                tmModule* outModule);

constexpr size_t tm_layout(size_t packed, size_t natural) { return QUILLO_HOST_TRANSMIT_PACK == 1 ? packed : natural; }

static_assert(sizeof(tmResult) == 4 && sizeof(tmClockCallback) == 8);

static_assert(sizeof(tmStdParms) == tm_layout(36, 40) && offsetof(tmStdParms, inPluginIndex) == 0);
static_assert(offsetof(tmStdParms, ioSerializedPluginData) == tm_layout(4, 8));
static_assert(offsetof(tmStdParms, ioSerializedPluginDataSize) == tm_layout(12, 16));
static_assert(offsetof(tmStdParms, ioPrivatePluginData) == tm_layout(20, 24));
static_assert(offsetof(tmStdParms, piSuites) == tm_layout(28, 32));

static_assert(sizeof(tmPluginInfo) == tm_layout(585, 588) && offsetof(tmPluginInfo, outIdentifier) == 0);
static_assert(offsetof(tmPluginInfo, outPriority) == tm_layout(37, 40));
static_assert(offsetof(tmPluginInfo, outAudioAvailable) == tm_layout(41, 44));
static_assert(offsetof(tmPluginInfo, outAudioDefaultEnabled) == tm_layout(45, 48));
static_assert(offsetof(tmPluginInfo, outClockAvailable) == tm_layout(49, 52));
static_assert(offsetof(tmPluginInfo, outVideoAvailable) == tm_layout(53, 56));
static_assert(offsetof(tmPluginInfo, outVideoDefaultEnabled) == tm_layout(57, 60));
static_assert(offsetof(tmPluginInfo, outDisplayName) == tm_layout(61, 64));
static_assert(offsetof(tmPluginInfo, outHideInUI) == tm_layout(573, 576));
static_assert(offsetof(tmPluginInfo, outHasSetup) == tm_layout(577, 580));
static_assert(offsetof(tmPluginInfo, outInterfaceVersion) == tm_layout(581, 584));

static_assert(sizeof(tmInstance) == tm_layout(132, 136) && offsetof(tmInstance, inInstanceID) == 0);
static_assert(offsetof(tmInstance, inTimelineID) == 4 && offsetof(tmInstance, inPlayID) == 8);
static_assert(offsetof(tmInstance, inHasAudio) == 12 && offsetof(tmInstance, inNumChannels) == 16);
static_assert(offsetof(tmInstance, inChannelLabels) == 20 && offsetof(tmInstance, inAudioSampleType) == 84);
static_assert(offsetof(tmInstance, inAudioSampleRate) == 88 && offsetof(tmInstance, inHasVideo) == 92);
static_assert(offsetof(tmInstance, inVideoWidth) == 96 && offsetof(tmInstance, inVideoHeight) == 100);
static_assert(offsetof(tmInstance, inVideoPARNum) == 104 && offsetof(tmInstance, inVideoPARDen) == 108);
static_assert(offsetof(tmInstance, inVideoFrameRate) == 112 && offsetof(tmInstance, inVideoFieldType) == 120);
static_assert(offsetof(tmInstance, ioPrivateInstanceData) == tm_layout(124, 128));

static_assert(sizeof(tmAudioMode) == tm_layout(340, 344) && offsetof(tmAudioMode, outAudioSampleRate) == 0);
static_assert(offsetof(tmAudioMode, outMaxBufferSize) == 4 && offsetof(tmAudioMode, outNumChannels) == 8);
static_assert(offsetof(tmAudioMode, outChannelLabels) == 12 && offsetof(tmAudioMode, outLatency) == tm_layout(76, 80));
static_assert(offsetof(tmAudioMode, outAudioOutputNames) == tm_layout(84, 88));

static_assert(sizeof(tmVideoMode) == 48 && offsetof(tmVideoMode, outWidth) == 0);
static_assert(offsetof(tmVideoMode, outHeight) == 4 && offsetof(tmVideoMode, outPARNum) == 8);
static_assert(offsetof(tmVideoMode, outPARDen) == 12 && offsetof(tmVideoMode, outFieldType) == 16);
static_assert(offsetof(tmVideoMode, outPixelFormat) == 20 && offsetof(tmVideoMode, outStreamLabel) == 24);
static_assert(offsetof(tmVideoMode, outLatency) == 40);

static_assert(sizeof(tmPlaybackClock) == tm_layout(76, 80) && offsetof(tmPlaybackClock, inClockCallback) == 0);
static_assert(offsetof(tmPlaybackClock, inCallbackContext) == 8 && offsetof(tmPlaybackClock, inStartTime) == 16);
static_assert(offsetof(tmPlaybackClock, inPlayMode) == 24 && offsetof(tmPlaybackClock, inSpeed) == 28);
static_assert(offsetof(tmPlaybackClock, inInTime) == 32 && offsetof(tmPlaybackClock, inOutTime) == 40);
static_assert(offsetof(tmPlaybackClock, inLoop) == 48);
static_assert(offsetof(tmPlaybackClock, inDroppedFrameCallback) == tm_layout(52, 56));
static_assert(offsetof(tmPlaybackClock, inAudioOffset) == tm_layout(60, 64));
static_assert(offsetof(tmPlaybackClock, inVideoOffset) == tm_layout(68, 72));

static_assert(sizeof(tmLabeledFrame) == 16 && offsetof(tmLabeledFrame, inFrame) == 0);
static_assert(offsetof(tmLabeledFrame, inStreamLabel) == 8);

static_assert(sizeof(tmPushVideo) == 32 && offsetof(tmPushVideo, inTime) == 0);
static_assert(offsetof(tmPushVideo, inPlayMode) == 8 && offsetof(tmPushVideo, inQuality) == 12);
static_assert(offsetof(tmPushVideo, inFrames) == 16 && offsetof(tmPushVideo, inFrameCount) == 24);

static_assert(sizeof(tmModule) == 96 && offsetof(tmModule, Startup) == 0 && offsetof(tmModule, Shutdown) == 8);
static_assert(offsetof(tmModule, SetupDialog) == 16 && offsetof(tmModule, NeedsReset) == 24);
static_assert(offsetof(tmModule, CreateInstance) == 32 && offsetof(tmModule, DisposeInstance) == 40);
static_assert(offsetof(tmModule, QueryAudioMode) == 48 && offsetof(tmModule, QueryVideoMode) == 56);
static_assert(offsetof(tmModule, ActivateDeactivate) == 64 && offsetof(tmModule, StartPlaybackClock) == 72);
static_assert(offsetof(tmModule, StopPlaybackClock) == 80 && offsetof(tmModule, PushVideo) == 88);
