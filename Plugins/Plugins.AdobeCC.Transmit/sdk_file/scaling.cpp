#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/scaling.h"

#include <cstddef>
#include <cstring>

namespace {

// The place under the middle of place i when count places become from_count.
std::ptrdiff_t nearest(csSDK_int32 i, csSDK_int32 count, csSDK_int32 from_count)
{
    return (2 * csSDK_int64{i} + 1) * from_count / (2 * csSDK_int64{count});
}

} // namespace

char const* GetSrcPix(SDK_FrameBuffer const& src, csSDK_int32 pixelSize, csSDK_int32 dstWidth, csSDK_int32 dstHeight,
                      csSDK_int32 x, csSDK_int32 y)
{
    return src.pixels + nearest(y, dstHeight, src.height) * src.rowBytes + nearest(x, dstWidth, src.width) * pixelSize;
}

void ScaleAndBltFrame(SDK_FrameBuffer const& src, SDK_FrameBuffer const& dst, csSDK_int32 pixelSize)
{
    if (src.width <= 0 || src.height <= 0 || dst.width <= 0 || dst.height <= 0 || pixelSize <= 0)
        return;
    auto const size = static_cast<std::size_t>(pixelSize);
    for (csSDK_int32 y = 0; y < dst.height; ++y) {
        char* const row = dst.pixels + std::ptrdiff_t{y} * dst.rowBytes;
        for (csSDK_int32 x = 0; x < dst.width; ++x)
            std::memcpy(row + static_cast<std::size_t>(x) * size,
                        GetSrcPix(src, pixelSize, dst.width, dst.height, x, y), size);
    }
}
