// Renders frames of a sequence for an exporter.
#pragma once

#include "PrSDKPixelFormat.h"
#include "PrSDKQuality.h"
#include "PrSDKRenderCacheType.h"
#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"

#define kPrSDKSequenceRenderSuite "MediaCore Sequence Render Suite"

#pragma pack(push, 1)

typedef struct SequenceRender_ParamsRec
{
    PrPixelFormat const* inRequestedPixelFormatArray; // the exporter's, in order of preference
    csSDK_int32 inRequestedPixelFormatArrayCount;
    csSDK_int32 inWidth;
    csSDK_int32 inHeight;
    csSDK_int32 inPixelAspectRatioNumerator;
    csSDK_int32 inPixelAspectRatioDenominator;
    PrRenderQuality inRenderQuality;
    prFieldType inFieldType;
    csSDK_int32 inDeinterlace;
    PrRenderQuality inDeinterlaceQuality;
    csSDK_int32 inCompositeOnBlack;
} SequenceRender_ParamsRec;

typedef struct SequenceRender_GetFrameReturnRec
{
    void* asyncCompletionData;
    csSDK_int32 returnVal;
    csSDK_int32 repeatCount;
    csSDK_int32 onMarker;
    PPixHand outFrame; // the exporter's from here on, given back through the PPix suite
} SequenceRender_GetFrameReturnRec;

// Only the first three functions are used; the others keep their places.
typedef struct PrSDKSequenceRenderSuite
{
    prSuiteError (*MakeVideoRenderer)(csSDK_uint32 pluginID, csSDK_uint32* outVideoRenderID, PrTime inFrameRate);
    prSuiteError (*ReleaseVideoRenderer)(csSDK_uint32 pluginID, csSDK_uint32 inVideoRenderID);
    prSuiteError (*RenderVideoFrame)(csSDK_uint32 inVideoRenderID, PrTime inTime,
                                     SequenceRender_ParamsRec* inRenderParams, PrRenderCacheType inCacheFlags,
                                     SequenceRender_GetFrameReturnRec* outFrame);
    void* QueueAsyncVideoFrameRender;
    void* SetAsyncRenderCompletionProc;
    void* GetFrameInfo;
    void* PrefetchMedia;
    void* PrefetchMediaWithRenderParameters;
    void* CancelAllOutstandingMediaPrefetches;
    void* IsPrefetchedMediaReady;
    void* MakeVideoRendererForTimeline;
    void* MakeVideoRendererForTimelineWithFrameRate;
    void* ReleaseVideoRendererForTimeline;
    void* RenderVideoFrameAndConformToPixelFormat;
} PrSDKSequenceRenderSuite;

#pragma pack(pop)

static_assert(sizeof(SequenceRender_ParamsRec) == 48);
static_assert(offsetof(SequenceRender_ParamsRec, inRequestedPixelFormatArrayCount) == 8);
static_assert(offsetof(SequenceRender_ParamsRec, inWidth) == 12 && offsetof(SequenceRender_ParamsRec, inHeight) == 16);
static_assert(offsetof(SequenceRender_ParamsRec, inPixelAspectRatioNumerator) == 20);
static_assert(offsetof(SequenceRender_ParamsRec, inPixelAspectRatioDenominator) == 24);
static_assert(offsetof(SequenceRender_ParamsRec, inRenderQuality) == 28);
static_assert(offsetof(SequenceRender_ParamsRec, inFieldType) == 32);
static_assert(offsetof(SequenceRender_ParamsRec, inDeinterlace) == 36);
static_assert(offsetof(SequenceRender_ParamsRec, inDeinterlaceQuality) == 40);
static_assert(offsetof(SequenceRender_ParamsRec, inCompositeOnBlack) == 44);
static_assert(sizeof(SequenceRender_GetFrameReturnRec) == 28);
static_assert(offsetof(SequenceRender_GetFrameReturnRec, returnVal) == 8);
static_assert(offsetof(SequenceRender_GetFrameReturnRec, repeatCount) == 12);
static_assert(offsetof(SequenceRender_GetFrameReturnRec, onMarker) == 16);
static_assert(offsetof(SequenceRender_GetFrameReturnRec, outFrame) == 20);
static_assert(sizeof(PrSDKSequenceRenderSuite) == 14 * sizeof(void*));
