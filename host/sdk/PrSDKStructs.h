// General records of the host's plug-in interface.
#pragma once

#include "PrSDKTypes.h"

enum PrParamType : csSDK_uint32 {
    kPrParamType_Int8 = 1,
    kPrParamType_Int16 = 2,
    kPrParamType_Int32 = 3,
    kPrParamType_Int64 = 4,
    kPrParamType_Float32 = 5,
    kPrParamType_Float64 = 6,
    kPrParamType_Bool = 7,
    kPrParamType_Point = 8,
    kPrParamType_Guid = 9,
    kPrParamType_PrMemoryPtr = 10
};

#pragma pack(push, 1)

// The host's own view of a frame; only a host looks inside.
struct PPix
{
    prRect bounds;
    csSDK_int32 rowbytes;
    csSDK_int32 bitsperpixel;
    void* pix;
    void* reserved[32];
};

// 36 characters of a GUID and the terminating zero.
typedef struct prPluginID
{
    char mGUID[37];
} prPluginID;

typedef struct PrParam
{
    PrParamType mType;
    union {
        csSDK_int8 mInt8;
        csSDK_int16 mInt16;
        csSDK_int32 mInt32;
        csSDK_int64 mInt64;
        float mFloat32;
        double mFloat64;
        csSDK_uint8 mBool;
        prFPoint64 mPoint;
        prPluginID mGuid;
        PrMemoryPtr mMemoryPtr;
    };
} PrParam;

#pragma pack(pop)

static_assert(sizeof(PPix) == 280 && offsetof(PPix, bounds) == 0 && offsetof(PPix, rowbytes) == 8);
static_assert(offsetof(PPix, bitsperpixel) == 12 && offsetof(PPix, pix) == 16 && offsetof(PPix, reserved) == 24);
static_assert(sizeof(prPluginID) == 37 && offsetof(prPluginID, mGUID) == 0);
static_assert(sizeof(PrParamType) == 4);
static_assert(sizeof(PrParam) == 41 && offsetof(PrParam, mType) == 0 && offsetof(PrParam, mInt64) == 4);
static_assert(offsetof(PrParam, mGuid) == 4 && offsetof(PrParam, mMemoryPtr) == 4);
