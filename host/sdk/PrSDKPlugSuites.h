// The tables of older host functions that every plug-in is handed.
#pragma once

#include "PrSDKPlugMemory.h"
#include "PrSDKPlugPPix.h"
#include "PrSDKPlugTimeline.h"
#include "PrSDKPlugUtilities.h"
#include "PrSDKPlugWindow.h"

#define PR_PISUITES_VERSION 9

#pragma pack(push, 1)

typedef struct piSuites
{
    int piInterfaceVer; // PR_PISUITES_VERSION
    PlugMemoryFuncsPtr memFuncs;
    PlugWindowFuncsPtr windFuncs;
    PlugppixFuncsPtr ppixFuncs;
    PlugUtilFuncsPtr utilFuncs;
    PlugTimelineFuncsPtr timelineFuncs;
} piSuites, *piSuitesPtr;

#pragma pack(pop)

static_assert(sizeof(piSuites) == 44 && offsetof(piSuites, piInterfaceVer) == 0 && offsetof(piSuites, memFuncs) == 4);
static_assert(offsetof(piSuites, windFuncs) == 12 && offsetof(piSuites, ppixFuncs) == 20);
static_assert(offsetof(piSuites, utilFuncs) == 28 && offsetof(piSuites, timelineFuncs) == 36);
