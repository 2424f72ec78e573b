// Access to the host's video frames.
#pragma once

#include "PrSDKPixelFormat.h"
#include "PrSDKTypes.h"

enum PrPPixBufferAccess : csSDK_uint32 {
    PrPPixBufferAccess_ReadOnly = 0,
    PrPPixBufferAccess_WriteOnly = 1,
    PrPPixBufferAccess_ReadWrite = 2
};

#define kPrSDKPPixSuite "Premiere PPix Suite"

#pragma pack(push, 1)

typedef struct PrSDKPPixSuite
{
    // Gives the frame back; the handle is invalid afterwards.
    prSuiteError (*Dispose)(PPixHand inPPixHand);
    // The first row in memory; null when the access is not to be had. Most frames are read only.
    prSuiteError (*GetPixels)(PPixHand inPPixHand, PrPPixBufferAccess inRequestedAccess, char** outPixelAddress);
    prSuiteError (*GetBounds)(PPixHand inPPixHand, prRect* inoutBoundingRect);
    prSuiteError (*GetRowBytes)(PPixHand inPPixHand, csSDK_int32* outRowBytes); // may be negative
    prSuiteError (*GetPixelAspectRatio)(PPixHand inPPixHand, csSDK_uint32* outNumerator, csSDK_uint32* outDenominator);
    prSuiteError (*GetPixelFormat)(PPixHand inPPixHand, PrPixelFormat* outPixelFormat);
    prSuiteError (*GetUniqueKey)(PPixHand inPPixHand, unsigned char* inoutKeyBuffer, size_t inKeyBufferSize);
    prSuiteError (*GetUniqueKeySize)(size_t* outKeyBufferSize);
    prSuiteError (*GetRenderTime)(PPixHand inPPixHand, csSDK_int32* outRenderMilliseconds);
} PrSDKPPixSuite;

#pragma pack(pop)

static_assert(sizeof(PrPPixBufferAccess) == 4);
static_assert(sizeof(PrSDKPPixSuite) == 72 && offsetof(PrSDKPPixSuite, Dispose) == 0);
static_assert(offsetof(PrSDKPPixSuite, GetPixels) == 8 && offsetof(PrSDKPPixSuite, GetBounds) == 16);
static_assert(offsetof(PrSDKPPixSuite, GetRowBytes) == 24 && offsetof(PrSDKPPixSuite, GetPixelAspectRatio) == 32);
static_assert(offsetof(PrSDKPPixSuite, GetPixelFormat) == 40 && offsetof(PrSDKPPixSuite, GetUniqueKey) == 48);
static_assert(offsetof(PrSDKPPixSuite, GetUniqueKeySize) == 56 && offsetof(PrSDKPPixSuite, GetRenderTime) == 64);
