// Render quality.
#pragma once

#include "PrSDKTypes.h"

enum PrRenderQuality : csSDK_uint32 {
    kPrRenderQuality_Draft = 0,
    kPrRenderQuality_Low = 1,
    kPrRenderQuality_Medium = 2,
    kPrRenderQuality_High = 3,
    kPrRenderQuality_Max = 4,
    kPrRenderQuality_Invalid = 0xFFFFFFFF
};

static_assert(sizeof(PrRenderQuality) == 4);
