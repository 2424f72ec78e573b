// The host's older utility functions, among them the way to the suites.
#pragma once

#include "PrSDKTypes.h"
#include "SPBasic.h"

typedef struct prFileSpec prFileSpec;
typedef struct prTimebaseRec prTimebaseRec;

typedef SPBasicSuite* plugGetSPBasicSuiteFunc();

#pragma pack(push, 1)

typedef struct PlugUtilFuncs
{
    void* unused1;
    void (*getSerialNumber)(char* buffer);
    csSDK_int32 (*getFileTimebase)(prFileSpec* file, csSDK_int32 audioOnly, prTimebaseRec* result);
    csSDK_int32 (*getFileVideo)(prFileSpec* file, csSDK_int32 frame, PPixHand picture, prRect* bounds,
                                csSDK_int32 flags);
    void* getFileAudioSecond;
    void* unused2;
    csSDK_int32 (*getFileVideoBounds)(prFileSpec* file, prRect* bounds);
    plugGetSPBasicSuiteFunc* getSPBasicSuite;
    csSDK_int32 (*getFileExtString)(csSDK_uint32 fileTypes, char* inBuffer, csSDK_uint32 inBufferSize);
} PlugUtilFuncs, *PlugUtilFuncsPtr;

#pragma pack(pop)

static_assert(sizeof(PlugUtilFuncs) == 72 && offsetof(PlugUtilFuncs, unused1) == 0);
static_assert(offsetof(PlugUtilFuncs, getSerialNumber) == 8 && offsetof(PlugUtilFuncs, getFileTimebase) == 16);
static_assert(offsetof(PlugUtilFuncs, getFileVideo) == 24 && offsetof(PlugUtilFuncs, getFileAudioSecond) == 32);
static_assert(offsetof(PlugUtilFuncs, unused2) == 40 && offsetof(PlugUtilFuncs, getFileVideoBounds) == 48);
static_assert(offsetof(PlugUtilFuncs, getSPBasicSuite) == 56 && offsetof(PlugUtilFuncs, getFileExtString) == 64);
