#include "host/adapter.h"

// Every header stands with its layout checks; these hold with the vendor's headers too.
static_assert(PrPixelFormat_VUYA_4444_8u_709 == static_cast<PrPixelFormat>(0x41595556));
static_assert(PrPixelFormat_BGRA_4444_8u == static_cast<PrPixelFormat>(0x61726762));
static_assert(PrPixelFormat_Invalid == static_cast<PrPixelFormat>(0x66646162));
static_assert(sizeof(prBool) == 4 && sizeof(tmResult) == 4 && sizeof(PrTime) == 8 && sizeof(prUTF16Char) == 2);
static_assert(offsetof(piSuites, utilFuncs) == 28 && offsetof(PlugUtilFuncs, getSPBasicSuite) == 56);
