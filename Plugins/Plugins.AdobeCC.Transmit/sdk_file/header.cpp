#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/header.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"

#include <cstring>

namespace {

void describe_video(SDK_FileHeader& header, quillo::host::export_parameters const& parameters, PrTime duration)
{
    header.hasVideo = 1;
    header.videoCodec = static_cast<csSDK_uint32>(parameters.integer(ADBEVideoCodec));
    if (header.videoCodec == SDK_CodecRAW)
        header.bitDepth = 32;
    else if (header.videoCodec == SDK_Codec10yu)
        header.bitDepth = 24;
    header.width = parameters.integer(ADBEVideoWidth);
    header.height = parameters.integer(ADBEVideoHeight);
    csSDK_int64 const ticks_per_frame = parameters.ticks(ADBEVideoFPS);
    header.ticksPerFrame = ticks_per_frame;
    header.frameCount = ticks_per_frame ? static_cast<csSDK_int32>(duration / ticks_per_frame) : 0;
    header.fieldType = parameters.integer(ADBEVideoFieldType);
    exRatioValue const aspect = parameters.ratio(ADBEVideoAspect);
    header.aspectNumerator = aspect.numerator;
    header.aspectDenominator = aspect.denominator;
}

void describe_audio(SDK_FileHeader& header, quillo::host::export_parameters const& parameters,
                    PrSDKTimeSuite const& time, PrTime duration)
{
    header.hasAudio = 1;
    header.audioSubtype = SDK_AudioSubtypeRAW;
    header.channelType = parameters.integer(ADBEAudioNumChannels);
    double const rate = parameters.real(ADBEAudioRatePerSecond);
    header.sampleRate = rate;
    PrTime ticks_per_sample = 0;
    time.GetTicksPerAudioSample(static_cast<float>(rate), &ticks_per_sample);
    header.sampleCount = ticks_per_sample ? duration / ticks_per_sample : 0;
}

} // namespace

csSDK_int32 WriteSDK_FileHeader(exportStdParms*, exDoExportRec* exportRec, PrTime duration)
{
    auto const& settings = *static_cast<SDK_ExporterSettings const*>(exportRec->privateData);
    quillo::host::export_parameters const parameters(*settings.exportParamSuite, exportRec->exporterPluginID);

    SDK_FileHeader header{};
    std::memcpy(header.signature, SDK_FileSignature, sizeof header.signature);
    header.version = SDK_FileVersion;
    if (exportRec->exportAudio)
        describe_audio(header, parameters, *settings.timeSuite, duration);
    if (exportRec->exportVideo) {
        describe_video(header, parameters, duration);
        if (header.width == 0 || header.height == 0)
            return SDK_NoPictureSize;
    }

    if (OSErr const error = FSSetForkPosition(fork_of(settings.file), fsFromStart, 0))
        return error;
    csSDK_int32 count = sizeof header;
    return prWriteFile(settings.file, &header, &count);
}

void WriteMarkerAndProjectDataToFile(exportStdParms*, exDoExportRec*) {}

csSDK_int32 prWriteFile(imFileRef file, void const* buffer, csSDK_int32* count)
{
    auto const wanted = static_cast<ByteCount>(*count < 0 ? 0 : *count);
    ByteCount written = 0;
    OSErr const error = FSWriteFork(fork_of(file), fsAtMark, 0, wanted, buffer, &written);
    *count = static_cast<csSDK_int32>(written);
    if (error)
        return error;
    return written < wanted ? SDK_WroteTooLittle : 0;
}

csSDK_int64 SDK_AudioStart(SDK_FileHeader const& header)
{
    csSDK_int64 const head = sizeof(SDK_FileHeader);
    if (!header.hasVideo || header.frameCount == 0)
        return head;
    return head + header.frameCount * (csSDK_int64{header.width} * header.height * 4 + SDK_FrameEndSize);
}

csSDK_int32 GetNumberOfAudioChannels(csSDK_int32 channelType)
{
    switch (channelType) {
    case kPrAudioChannelType_Mono:
        return 1;
    case kPrAudioChannelType_Stereo:
        return 2;
    case kPrAudioChannelType_51:
        return 6;
    default:
        return -1;
    }
}
