// Flags of the host's render cache; 0 is none.
#pragma once

#include "PrSDKTypes.h"

typedef csSDK_int32 PrRenderCacheType;
