// General types of the host's plug-in interface. Records of the interface are packed to one byte.
#pragma once

#include <cstddef>

typedef signed char csSDK_int8;
typedef unsigned char csSDK_uint8;
typedef short csSDK_int16;
typedef unsigned short csSDK_uint16;
typedef int csSDK_int32;
typedef unsigned int csSDK_uint32;
// long long on every platform, so that mangled names agree.
typedef long long csSDK_int64;
typedef unsigned long long csSDK_uint64;
typedef csSDK_uint64 csSDK_size_t;
typedef csSDK_int64 prInt64;

typedef csSDK_int32 prBool; // kPrTrue or kPrFalse, four bytes
enum { kPrFalse = 0, kPrTrue = 1 };

typedef csSDK_uint8 prUTF8Char;
typedef csSDK_uint16 prUTF16Char;
typedef char* PrMemoryPtr;
typedef PrMemoryPtr* PrMemoryHandle;

typedef csSDK_uint32 PrFourCC;
typedef csSDK_int32 PrTimelineID;
typedef csSDK_int32 PrClipID;
typedef prInt64 PrAudioSample; // a position in sample frames

typedef csSDK_int32 prSuiteError;
enum : csSDK_uint32 {
    suiteError_NoError = 0,
    suiteError_Fail = 0x80000000,
    suiteError_InvalidParms = 0x80000001,
    suiteError_OutOfMemory = 0x80000002,
    suiteError_InvalidCall = 0x80000003,
    suiteError_NotImplemented = 0x80000004,
    suiteError_IDNotValid = 0x80000005,
    suiteError_RenderPending = 0x00010000,
    suiteError_RenderedFrameNotFound = 0x00010001,
    suiteError_RenderedFrameCanceled = 0x00010002,
    suiteError_RenderInvalidPixelFormat = 0x80010000,
    suiteError_TimeRoundedAudioRate = 0x00020000,
    suiteError_CompilerCompileAbort = 0x00030001,
    suiteError_CompilerCompileDone = 0x00030002,
    suiteError_ExporterSuspended = 0x8003000F,
    suiteError_PlayModuleAudioInitFailure = 0x80060000,
    suiteError_PlayModuleAudioIllegalPlaySetting = 0x80060001,
    suiteError_PlayModuleAudioNotInitialized = 0x80060002,
    suiteError_PlayModuleAudioNotStarted = 0x80060003,
    suiteError_PlayModuleAudioIllegalAction = 0x80060004
};
enum { malNoError = 0 };

typedef csSDK_int32 prFieldType;
enum {
    prFieldsNone = 0, // progressive
    prFieldsUpperFirst = 1,
    prFieldsLowerFirst = 2,
    prFieldsUnknown = 3,
    prFieldsAny = 4,
    prFieldsInvalid = -1
};

// The window that owns a dialog. Opaque here.
#if defined(__OBJC__)
@class NSWindow;
@class NSView;
#else
class NSWindow;
class NSView;
#endif
typedef NSView* prWnd;
typedef NSWindow* prParentWnd;

// A video frame of the host. Plug-ins reach into it through the PPix suite only.
typedef struct PPix PPix;
typedef PPix** PPixHand;

#pragma pack(push, 1)

typedef struct prRect
{
    csSDK_int16 top;
    csSDK_int16 left;
    csSDK_int16 bottom;
    csSDK_int16 right;
} prRect;

typedef struct prFPoint64
{
    double x;
    double y;
} prFPoint64;

// A text that the String suite owns; all zero is the empty one.
typedef struct PrSDKString
{
    csSDK_int64 opaque[2];
} PrSDKString;

typedef struct PrSDKGuid
{
    csSDK_int64 opaque[2];
} PrSDKGuid;

typedef struct PrSDKColorSpaceID
{
    csSDK_int64 opaque[2];
} PrSDKColorSpaceID;

typedef struct PrSDKLUTID
{
    csSDK_int64 opaque[2];
} PrSDKLUTID;

#pragma pack(pop)

static_assert(sizeof(csSDK_int8) == 1 && sizeof(csSDK_int16) == 2 && sizeof(csSDK_int32) == 4);
static_assert(sizeof(csSDK_int64) == 8 && sizeof(csSDK_size_t) == 8 && sizeof(PrMemoryPtr) == 8);
static_assert(sizeof(prBool) == 4 && sizeof(prUTF16Char) == 2 && sizeof(prParentWnd) == 8 && sizeof(PPixHand) == 8);
static_assert(sizeof(prRect) == 8 && offsetof(prRect, top) == 0 && offsetof(prRect, left) == 2);
static_assert(offsetof(prRect, bottom) == 4 && offsetof(prRect, right) == 6);
static_assert(sizeof(prFPoint64) == 16 && offsetof(prFPoint64, x) == 0 && offsetof(prFPoint64, y) == 8);
static_assert(sizeof(PrSDKString) == 16 && offsetof(PrSDKString, opaque) == 0);
static_assert(sizeof(PrSDKGuid) == 16 && offsetof(PrSDKGuid, opaque) == 0);
static_assert(sizeof(PrSDKColorSpaceID) == 16 && offsetof(PrSDKColorSpaceID, opaque) == 0);
static_assert(sizeof(PrSDKLUTID) == 16 && offsetof(PrSDKLUTID, opaque) == 0);
