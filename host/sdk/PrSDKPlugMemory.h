// Memory that passes between host and plug-in.
#pragma once

#include "PrSDKTypes.h"

#pragma pack(push, 1)

typedef struct PlugMemoryFuncs
{
    PrMemoryPtr (*newPtr)(csSDK_uint32 byteCount);
    void (*setPtrSize)(PrMemoryPtr* ptr, csSDK_uint32 newSize);
    csSDK_int32 (*getPtrSize)(PrMemoryPtr ptr);
    void (*disposePtr)(PrMemoryPtr ptr);
    PrMemoryHandle (*newHandle)(csSDK_uint32 byteCount);
    csSDK_int32 (*setHandleSize)(PrMemoryHandle handle, csSDK_uint32 newSize);
    csSDK_int32 (*getHandleSize)(PrMemoryHandle handle);
    void (*disposeHandle)(PrMemoryHandle handle);
    PrMemoryPtr (*newPtrClear)(csSDK_uint32 byteCount);
    PrMemoryHandle (*newHandleClear)(csSDK_uint32 byteCount);
    void (*lockHandle)(PrMemoryHandle handle);
    void (*unlockHandle)(PrMemoryHandle handle);
} PlugMemoryFuncs, *PlugMemoryFuncsPtr;

#pragma pack(pop)

static_assert(sizeof(PlugMemoryFuncs) == 96 && offsetof(PlugMemoryFuncs, newPtr) == 0);
static_assert(offsetof(PlugMemoryFuncs, setPtrSize) == 8 && offsetof(PlugMemoryFuncs, getPtrSize) == 16);
static_assert(offsetof(PlugMemoryFuncs, disposePtr) == 24 && offsetof(PlugMemoryFuncs, newHandle) == 32);
static_assert(offsetof(PlugMemoryFuncs, setHandleSize) == 40 && offsetof(PlugMemoryFuncs, getHandleSize) == 48);
static_assert(offsetof(PlugMemoryFuncs, disposeHandle) == 56 && offsetof(PlugMemoryFuncs, newPtrClear) == 64);
static_assert(offsetof(PlugMemoryFuncs, newHandleClear) == 72 && offsetof(PlugMemoryFuncs, lockHandle) == 80);
static_assert(offsetof(PlugMemoryFuncs, unlockHandle) == 88);
