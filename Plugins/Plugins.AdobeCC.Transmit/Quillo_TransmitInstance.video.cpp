#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "lib/format_conversion/format_conversion.h"
#include "lib/math/scale.h"

namespace conversion = Processing::FXlib::format_conversion;
namespace host = quillo::host;
using Processing::Quillo::Plugins::Lib::math::scale;

namespace {

// A host frame turned the right way up: the host's rows stand bottom first, so reading starts at the last one in
// memory.
struct upright_rows
{
    unsigned char const* start;
    int stride; // bytes, negative as a rule
    int width;
    int height;
};

// Through the integers: an address that the host did not give stays harmless until it is read.
unsigned char const* moved(unsigned char const* address, int bytes)
{
    return reinterpret_cast<unsigned char const*>(reinterpret_cast<std::uintptr_t>(address) +
                                                  static_cast<std::uintptr_t>(std::intptr_t{bytes}));
}

upright_rows rows_of(PrSDKPPixSuite const& ppix, PPixHand picture)
{
    prRect bounds{};
    ppix.GetBounds(picture, &bounds);
    int const width = std::abs(bounds.right - bounds.left);
    int const height = std::abs(bounds.bottom - bounds.top);

    char* pixels = nullptr;
    csSDK_int32 row_bytes = 0;
    ppix.GetPixels(picture, PrPPixBufferAccess_ReadOnly, &pixels);
    ppix.GetRowBytes(picture, &row_bytes);
    // A 32-bit product.
    auto const to_last_row = static_cast<int>(static_cast<unsigned>(height - 1) * static_cast<unsigned>(row_bytes));
    return {moved(reinterpret_cast<unsigned char const*>(pixels), to_last_row), -row_bytes, width, height};
}

} // namespace

void Quillo_TransmitInstance::FrameBuffer::grow_to(long long size)
{
    if (size <= capacity)
        return;
    data = static_cast<unsigned char*>(std::realloc(data, static_cast<std::size_t>(size)));
    capacity = static_cast<int>(size);
}

tmResult Quillo_TransmitInstance::PushVideo(tmStdParms const* /*parms*/, tmInstance const* instance,
                                            tmPushVideo const* push)
{
    long long timecode = scale(push->inTime, timeScaleNum, timeScaleDen);
    for (csSDK_size_t i = 0; i < push->inFrameCount; ++i) {
        PPixHand const picture = push->inFrames[i].inFrame;
        SenderVideoFrame frame = converted_frame(picture, instance->inVideoFieldType);
        frame.frameRateN = frameRateN;
        frame.frameRateD = frameRateD;
        frame.aspectRatio = aspectRatio;
        frame.timecode = timecode;
        Quillolib_send_send_video_async(sender, &frame);

        timecode += scale(10000000ll, frameRateD, frameRateN);
        suites.ppix->Dispose(picture);
    }
    return host::success;
}

// The frame without its rate, shape and time. Its data is the buffer that is current afterwards.
SenderVideoFrame Quillo_TransmitInstance::converted_frame(PPixHand picture, prFieldType field_type)
{
    upright_rows source = rows_of(*suites.ppix, picture);
    PrPixelFormat format = PrPixelFormat_Invalid;
    suites.ppix->GetPixelFormat(picture, &format);

    // Waits until the frame sent before is no longer read. The buffer of the one before that is then free as well.
    bufferIndex = 1 - bufferIndex;
    Quillolib_send_send_video(sender, nullptr);
    FrameBuffer& buffer = buffers[bufferIndex];

    // A sliver, small one way only, is a picture like any other.
    bool const too_small = source.width < 8 && source.height < 8;
    if ((format != vuya && format != bgra) || too_small)
        return black_frame(buffer);

    csSDK_uint32 par_num = 0;
    csSDK_uint32 par_den = 0;
    suites.ppix->GetPixelAspectRatio(picture, &par_num, &par_den);
    // Of the whole picture, whatever of it is sent; a black frame that follows has the same shape.
    aspectRatio = (static_cast<float>(par_num) * static_cast<float>(source.width)) /
                  (static_cast<float>(par_den) * static_cast<float>(source.height));

    int const width = source.width & 0x7FFFFFFE;
    int rows = source.height;
    if (field_type == prFieldsLowerFirst) {
        // Without the top row the upper field comes first. 486 rows become the 480 of NTSC.
        source.start = moved(source.start, source.stride);
        rows = source.height == 486 ? 480 : source.height - 2;
    }

    SenderVideoFrame frame{};
    frame.width = width;
    frame.height = rows;
    frame.frameFormat = field_type == prFieldsUpperFirst || field_type == prFieldsLowerFirst ? FrameFormat_interleaved
                                                                                             : FrameFormat_progressive;
    buffer.grow_to((format == vuya ? 3ll : 4ll) * rows * width);
    frame.data = buffer.data;

    bool all_opaque = false;
    if (format == bgra) {
        frame.lineStride = 4 * width;
        conversion::bgra::bgra(source.start, source.stride, buffer.data, frame.lineStride, width, rows, &all_opaque);
        frame.fourCC = all_opaque ? SenderFourCC_BGRX : SenderFourCC_BGRA;
    } else {
        frame.lineStride = 2 * width;
        unsigned char* const alpha = buffer.data + std::ptrdiff_t{frame.lineStride} * std::max(rows, 0);
        conversion::vuya::uyvy_a(source.start, source.stride, buffer.data, frame.lineStride, alpha, width, width, rows,
                                 &all_opaque);
        frame.fourCC = all_opaque ? SenderFourCC_UYVY : SenderFourCC_UYVA;
    }
    return frame;
}

SenderVideoFrame Quillo_TransmitInstance::black_frame(FrameBuffer& buffer)
{
    constexpr int side = 8;
    constexpr int size = 4 * side * side;
    buffer.grow_to(size);
    std::memset(buffer.data, 0, size);

    SenderVideoFrame frame{};
    frame.width = side;
    frame.height = side;
    frame.fourCC = SenderFourCC_BGRX;
    frame.frameFormat = FrameFormat_progressive;
    frame.data = buffer.data;
    frame.lineStride = 4 * side;
    return frame;
}
