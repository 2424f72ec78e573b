// Nearest-pixel scaling of a stored frame into a buffer of the host.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

#include <PrSDKTypes.h>

// A picture in memory: rows rowBytes apart, which may be negative or padded.
struct SDK_FrameBuffer
{
    char* pixels; // the first row
    csSDK_int32 rowBytes;
    csSDK_int32 width;
    csSDK_int32 height;
};

// The pixel of src that lies under the middle of pixel (x, y) of a dstWidth x dstHeight picture of the same view.
QUILLO_EXPORTED char const* GetSrcPix(SDK_FrameBuffer const& src, csSDK_int32 pixelSize, csSDK_int32 dstWidth,
                                      csSDK_int32 dstHeight, csSDK_int32 x, csSDK_int32 y);

// Fills dst with src, pixelSize bytes a pixel. An empty picture on either side writes nothing. The two do not overlap.
QUILLO_EXPORTED void ScaleAndBltFrame(SDK_FrameBuffer const& src, SDK_FrameBuffer const& dst, csSDK_int32 pixelSize);
