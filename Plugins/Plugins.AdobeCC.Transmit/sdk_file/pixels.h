// Pixels of the SDK_File format: sizes, row padding, and conversions between 8-bit, float and 10-bit V410 words.
// Widths and heights are in pixels; a size of 0 or less converts nothing. Float YCbCr is BT.601, Y in 0..1, U and V in
// -0.5..0.5.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

#include <PrSDKPixelFormat.h>
#include <PrSDKTypes.h>

// Bytes of a pixel: 16 for VUYA float, 4 for everything else.
QUILLO_EXPORTED csSDK_int32 GetPixelFormatSize(PrPixelFormat format);
QUILLO_EXPORTED csSDK_int32 GetPixelFormatSize(unsigned format);

// Copies rows of width x pixelSize bytes, rowBytes apart in src, to a tight dst. Nothing when the rows have no padding.
QUILLO_EXPORTED void RemoveRowPadding(char const* src, char* dst, csSDK_int32 rowBytes, csSDK_int32 width,
                                      csSDK_int32 pixelSize, csSDK_int32 height);

// Spreads tight rows to places rowBytes apart, the last row first, so that dst may be src. Nothing when the rows have
// no padding. The padding itself is not written.
QUILLO_EXPORTED void AddRowPadding(char const* src, char* dst, csSDK_int32 rowBytes, csSDK_int32 width,
                                   csSDK_int32 pixelSize, csSDK_int32 height);

// Four channels of 0..255 to four floats of 0..1, in the same order.
QUILLO_EXPORTED void ConvertFrom8uTo32f(unsigned char const* src, float* dst, csSDK_int32 width, csSDK_int32 height);

// B, G, R, A to V, U, Y, A in place.
QUILLO_EXPORTED void ConvertFromBGRA32fToVUYA32f(float* buffer, csSDK_int32 width, csSDK_int32 height);

// V, U, Y, A floats to words with Cb in bits 22..31, Y in 12..21, Cr in 2..11, studio range; alpha is lost.
QUILLO_EXPORTED void ConvertFrom32fToV410(float const* src, csSDK_uint32* dst, csSDK_int32 width, csSDK_int32 height);

// The way back, with an alpha of 1.
QUILLO_EXPORTED void ConvertFromV410To32f(csSDK_uint32 const* src, float* dst, csSDK_int32 width, csSDK_int32 height);
