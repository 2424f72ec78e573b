#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"

#include <memory>
#include <vector>

namespace {

// A frame of the host, given back when it goes out of scope.
class rendered_frame
{
  public:
    rendered_frame(PrSDKPPixSuite const& suite, PPixHand frame) : suite_(suite), frame_(frame) {}
    rendered_frame(rendered_frame const&) = delete;
    rendered_frame& operator=(rendered_frame const&) = delete;
    ~rendered_frame() { suite_.Dispose(frame_); }

    char const* pixels() const
    {
        char* address = nullptr;
        suite_.GetPixels(frame_, PrPPixBufferAccess_ReadOnly, &address);
        return address;
    }

    csSDK_int32 row_bytes() const
    {
        csSDK_int32 bytes = 0;
        suite_.GetRowBytes(frame_, &bytes);
        return bytes;
    }

    PrPixelFormat format() const
    {
        PrPixelFormat format = PrPixelFormat_Invalid;
        suite_.GetPixelFormat(frame_, &format);
        return format;
    }

  private:
    PrSDKPPixSuite const& suite_;
    PPixHand frame_;
};

struct picture_size
{
    csSDK_int32 width;
    csSDK_int32 height;
};

// The words of a frame in either format that a '10yu' export asks for.
std::vector<csSDK_uint32> v410_words(char const* pixels, PrPixelFormat format, picture_size size)
{
    std::size_t const count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    std::vector<csSDK_uint32> words(count);
    std::vector<float> converted;
    auto const* vuya = reinterpret_cast<float const*>(pixels);
    if (format != PrPixelFormat_VUYA_4444_32f) {
        converted.resize(count * 4);
        ConvertFrom8uTo32f(reinterpret_cast<unsigned char const*>(pixels), converted.data(), size.width, size.height);
        ConvertFromBGRA32fToVUYA32f(converted.data(), size.width, size.height);
        vuya = converted.data();
    }
    ConvertFrom32fToV410(vuya, words.data(), size.width, size.height);
    return words;
}

// In pieces, since a byte count of prWriteFile has 32 bits.
csSDK_int32 append(imFileRef file, char const* bytes, csSDK_int64 count)
{
    constexpr csSDK_int64 piece = 1 << 30;
    for (csSDK_int64 done = 0; done < count;) {
        auto step = static_cast<csSDK_int32>(count - done < piece ? count - done : piece);
        if (csSDK_int32 const error = prWriteFile(file, bytes + done, &step))
            return error;
        done += step;
    }
    return 0;
}

} // namespace

csSDK_int32 RenderAndWriteVideoFrame(PrTime time, exDoExportRec* exportRec)
{
    auto const& settings = *static_cast<SDK_ExporterSettings const*>(exportRec->privateData);
    quillo::host::export_parameters const parameters(*settings.exportParamSuite, exportRec->exporterPluginID);
    auto const codec = static_cast<csSDK_uint32>(parameters.integer(ADBEVideoCodec));
    picture_size const size{parameters.integer(ADBEVideoWidth), parameters.integer(ADBEVideoHeight)};
    exRatioValue const aspect = parameters.ratio(ADBEVideoAspect);

    static constexpr PrPixelFormat formats[] = {PrPixelFormat_VUYA_4444_32f, PrPixelFormat_BGRA_4444_8u};
    bool const ten_bit = codec == SDK_Codec10yu;
    SequenceRender_ParamsRec request{};
    request.inRequestedPixelFormatArray = ten_bit ? formats : formats + 1;
    request.inRequestedPixelFormatArrayCount = ten_bit ? 2 : 1;
    request.inWidth = size.width;
    request.inHeight = size.height;
    request.inPixelAspectRatioNumerator = aspect.numerator;
    request.inPixelAspectRatioDenominator = aspect.denominator;
    request.inRenderQuality = exportRec->maximumRenderQuality ? kPrRenderQuality_Max : kPrRenderQuality_High;
    request.inFieldType = parameters.integer(ADBEVideoFieldType);
    request.inDeinterlaceQuality = request.inRenderQuality;

    SequenceRender_GetFrameReturnRec reply{};
    csSDK_int32 const result =
        settings.renderSuite->RenderVideoFrame(settings.videoRenderID, time, &request, 0, &reply);
    PPixHand const handle = reply.outFrame;
    if (result == static_cast<csSDK_int32>(suiteError_CompilerCompileAbort) || !handle)
        return result;

    rendered_frame const frame(*settings.ppixSuite, handle);
    PrPixelFormat const format = frame.format();
    csSDK_int64 tight_row = csSDK_int64{GetPixelFormatSize(format)} * size.width;
    csSDK_int32 const row_bytes = frame.row_bytes();
    char const* pixels = frame.pixels();
    if (row_bytes < tight_row || !pixels)
        return static_cast<csSDK_int32>(suiteError_Fail);

    std::unique_ptr<char[]> tight;
    if (row_bytes > tight_row) {
        tight = std::make_unique<char[]>(static_cast<std::size_t>(tight_row) * static_cast<std::size_t>(size.height));
        RemoveRowPadding(pixels, tight.get(), row_bytes, size.width, GetPixelFormatSize(format), size.height);
        pixels = tight.get();
    }

    std::vector<csSDK_uint32> words;
    if (ten_bit) {
        words = v410_words(pixels, format, size);
        pixels = reinterpret_cast<char const*>(words.data());
        tight_row = csSDK_int64{size.width} * 4;
    }

    csSDK_int32 written = 0;
    if (codec != SDK_CodecRLE)
        written = append(settings.file, pixels, tight_row * size.height);
    if (written == 0)
        written = append(settings.file, SDK_FrameEnd, SDK_FrameEndSize);
    return result ? result : written;
}

csSDK_int32 ReadSDK_File(imFileRef file, csSDK_int32 frameBytes, csSDK_int32 frameIndex, char* buffer)
{
    if (frameBytes < 0 || frameIndex < 0)
        return SDK_ReadFailed;
    SInt64 const start =
        static_cast<SInt64>(sizeof(SDK_FileHeader)) + SInt64{frameIndex} * (SInt64{frameBytes} + SDK_FrameEndSize);
    OSErr const error =
        FSReadFork(fork_of(file), fsFromStart, start, static_cast<ByteCount>(frameBytes), buffer, nullptr);
    return error ? SDK_ReadFailed : 0;
}
