// Pixel formats: four characters, the first in the lowest byte, so that they stand in memory in reading order.
// Uncompressed pictures have their bottom row first in memory.
#pragma once

#include "PrSDKTypes.h"

enum PrPixelFormat : csSDK_uint32 {
    PrPixelFormat_BGRA_4444_8u = 0x61726762,      // bgra
    PrPixelFormat_VUYA_4444_8u = 0x61797576,      // vuya, Rec. 601
    PrPixelFormat_VUYA_4444_8u_709 = 0x41595556,  // VUYA, Rec. 709
    PrPixelFormat_BGRA_4444_16u = 0x61726742,     // Bgra, white is 32768
    PrPixelFormat_BGRA_4444_32f = 0x61724742,     // BGra
    PrPixelFormat_VUYA_4444_32f = 0x61795556,     // VUya, Rec. 601
    PrPixelFormat_VUYA_4444_32f_709 = 0x61595576, // vUYa, Rec. 709
    PrPixelFormat_ARGB_4444_8u = 0x62677261,      // argb
    PrPixelFormat_BGRX_4444_8u = 0x78726762,      // bgrx, opaque
    PrPixelFormat_VUYX_4444_8u = 0x78797576,      // vuyx, opaque, Rec. 601
    PrPixelFormat_VUYX_4444_8u_709 = 0x37787576,  // vux7, opaque, Rec. 709
    PrPixelFormat_BGRP_4444_8u = 0x70726762,      // bgrp, premultiplied
    PrPixelFormat_UYVY_422_8u_601 = 0x79767975,   // uyvy
    PrPixelFormat_UYVY_422_8u_709 = 0x37767975,   // uyv7
    PrPixelFormat_YUYV_422_8u_601 = 0x32797579,   // yuy2
    PrPixelFormat_YUYV_422_8u_709 = 0x33797579,   // yuy3
    PrPixelFormat_Raw = 0x77776172,               // raww
    PrPixelFormat_Invalid = 0x66646162,           // badf
    PrPixelFormat_Any = 0
};

static_assert(sizeof(PrPixelFormat) == 4);
