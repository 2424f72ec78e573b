// Players of the host.
#pragma once

#include "PrSDKTypes.h"

typedef csSDK_int32 PrPlayID; // 0: not driven by a player

enum pmPlayMode : csSDK_uint32 { playmode_Stopped = 0, playmode_Playing = 1, playmode_Scrubbing = 2 };

enum pmFieldDisplay : csSDK_uint32 {
    pmFieldDisplay_ShowFirstField = 0,
    pmFieldDisplay_ShowSecondField = 1,
    pmFieldDisplay_ShowBothFields = 2
};

enum PrActivationEvent : csSDK_uint32 {
    PrActivationEvent_Unspecified = 0,
    PrActivationEvent_RecorderActivated = 1,
    PrActivationEvent_PlayerActivated = 2,
    PrActivationEvent_ApplicationLostFocus = 3
};

static_assert(sizeof(PrPlayID) == 4 && sizeof(pmPlayMode) == 4 && sizeof(pmFieldDisplay) == 4);
static_assert(sizeof(PrActivationEvent) == 4);
