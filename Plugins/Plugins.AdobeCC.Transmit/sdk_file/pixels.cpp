#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

std::ptrdiff_t pixel_count(csSDK_int32 width, csSDK_int32 height)
{
    return width > 0 && height > 0 ? std::ptrdiff_t{width} * height : 0;
}

bool has_padding(csSDK_int32 rowBytes, csSDK_int32 width, csSDK_int32 pixelSize)
{
    return csSDK_int64{width} * pixelSize < rowBytes;
}

// NaN becomes low.
csSDK_uint32 ten_bits(float value, float low, float high)
{
    return static_cast<csSDK_uint32>(std::min(std::max(low, value), high));
}

} // namespace

csSDK_int32 GetPixelFormatSize(PrPixelFormat format) { return format == PrPixelFormat_VUYA_4444_32f ? 16 : 4; }

csSDK_int32 GetPixelFormatSize(unsigned) { return 4; }

void RemoveRowPadding(char const* src, char* dst, csSDK_int32 rowBytes, csSDK_int32 width, csSDK_int32 pixelSize,
                      csSDK_int32 height)
{
    if (!has_padding(rowBytes, width, pixelSize))
        return;
    std::size_t const tight = static_cast<std::size_t>(width) * static_cast<std::size_t>(pixelSize);
    for (std::ptrdiff_t row = 0; row < height; ++row)
        std::memcpy(dst + row * static_cast<std::ptrdiff_t>(tight), src + row * rowBytes, tight);
}

void AddRowPadding(char const* src, char* dst, csSDK_int32 rowBytes, csSDK_int32 width, csSDK_int32 pixelSize,
                   csSDK_int32 height)
{
    if (!has_padding(rowBytes, width, pixelSize))
        return;
    std::size_t const tight = static_cast<std::size_t>(width) * static_cast<std::size_t>(pixelSize);
    for (std::ptrdiff_t row = height - 1; row >= 0; --row)
        std::memmove(dst + row * rowBytes, src + row * static_cast<std::ptrdiff_t>(tight), tight);
}

void ConvertFrom8uTo32f(unsigned char const* src, float* dst, csSDK_int32 width, csSDK_int32 height)
{
    std::ptrdiff_t const channels = pixel_count(width, height) * 4;
    for (std::ptrdiff_t i = 0; i < channels; ++i)
        dst[i] = static_cast<float>(src[i]) / 255.0f;
}

void ConvertFromBGRA32fToVUYA32f(float* buffer, csSDK_int32 width, csSDK_int32 height)
{
    float* pixel = buffer;
    for (std::ptrdiff_t left = pixel_count(width, height); left > 0; --left, pixel += 4) {
        float const b = pixel[0];
        float const g = pixel[1];
        float const r = pixel[2];
        pixel[0] = 0.5f * r - 0.418688f * g - 0.081312f * b;
        pixel[1] = -0.168736f * r - 0.331264f * g + 0.5f * b;
        pixel[2] = 0.299f * r + 0.587f * g + 0.114f * b;
    }
}

void ConvertFrom32fToV410(float const* src, csSDK_uint32* dst, csSDK_int32 width, csSDK_int32 height)
{
    std::ptrdiff_t const pixels = pixel_count(width, height);
    for (std::ptrdiff_t i = 0; i < pixels; ++i) {
        float const* const vuya = src + i * 4;
        // Chroma stops at 64 below, as luma does.
        csSDK_uint32 const cr = ten_bits(vuya[0] * 896.0f + 512.5f, 64.0f, 960.0f);
        csSDK_uint32 const cb = ten_bits(vuya[1] * 896.0f + 512.5f, 64.0f, 960.0f);
        csSDK_uint32 const y = ten_bits(vuya[2] * 876.0f + 64.5f, 64.0f, 940.0f);
        dst[i] = (cb << 22) + (y << 12) + (cr << 2);
    }
}

void ConvertFromV410To32f(csSDK_uint32 const* src, float* dst, csSDK_int32 width, csSDK_int32 height)
{
    std::ptrdiff_t const pixels = pixel_count(width, height);
    auto const component = [](csSDK_uint32 word, int bit) { return static_cast<csSDK_int32>(word >> bit & 0x3FF); };
    for (std::ptrdiff_t i = 0; i < pixels; ++i) {
        float* const vuya = dst + i * 4;
        csSDK_uint32 const word = src[i];
        vuya[0] = static_cast<float>(component(word, 2) - 512) / 896.0f;
        vuya[1] = static_cast<float>(component(word, 22) - 512) / 896.0f;
        vuya[2] = static_cast<float>(component(word, 12) - 64) / 876.0f;
        vuya[3] = 1.0f;
    }
}
