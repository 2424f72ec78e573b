#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"

#include <algorithm>
#include <vector>

namespace {

constexpr PrAudioSample sample_bytes = sizeof(float);

// The host's renderer of an export's sound, released when it goes out of scope.
class audio_renderer
{
  public:
    audio_renderer(PrSDKSequenceAudioSuite const& suite, exDoExportRec const& record, csSDK_int32 channel_type,
                   float rate)
        : suite_(suite), exporter_(record.exporterPluginID),
          error_(suite.MakeAudioRenderer(exporter_, record.startTime, static_cast<PrAudioChannelType>(channel_type),
                                         kPrAudioSampleType_32BitFloat, rate, &id_))
    {
    }
    audio_renderer(audio_renderer const&) = delete;
    audio_renderer& operator=(audio_renderer const&) = delete;
    ~audio_renderer()
    {
        if (!error_)
            suite_.ReleaseAudioRenderer(exporter_, id_);
    }

    csSDK_int32 error() const { return error_; }

    csSDK_uint32 most_samples(PrTime ticks_per_frame) const
    {
        csSDK_uint32 samples = 0;
        suite_.GetMaxBlip(id_, ticks_per_frame, &samples);
        return samples;
    }

    csSDK_int32 render(csSDK_uint32 samples, float** channels) const
    {
        return suite_.GetAudio(id_, samples, channels, kPrFalse);
    }

  private:
    PrSDKSequenceAudioSuite const& suite_;
    csSDK_uint32 exporter_;
    csSDK_uint32 id_ = 0;
    csSDK_int32 error_;
};

// One chunk of every channel, each to its own stretch of the file; the mark ends behind channel 0's part of it.
csSDK_int32 write_chunk(imFileRef file, std::vector<float*> const& channels, PrAudioSample chunk, PrAudioSample total)
{
    auto const count = static_cast<PrAudioSample>(channels.size());
    for (PrAudioSample channel = 0; channel < count; ++channel) {
        auto bytes = static_cast<csSDK_int32>(chunk * sample_bytes);
        if (csSDK_int32 const error = prWriteFile(file, channels[static_cast<std::size_t>(channel)], &bytes))
            return error;
        PrAudioSample const step = channel + 1 < count ? total - chunk : (1 - count) * total;
        if (OSErr const error = FSSetForkPosition(fork_of(file), fsFromMark, step * sample_bytes))
            return error;
    }
    return 0;
}

} // namespace

csSDK_int32 RenderAndWriteAllAudio(exDoExportRec* exportRec, PrTime duration)
{
    auto const& settings = *static_cast<SDK_ExporterSettings const*>(exportRec->privateData);
    quillo::host::export_parameters const parameters(*settings.exportParamSuite, exportRec->exporterPluginID);
    auto const rate = static_cast<float>(parameters.real(ADBEAudioRatePerSecond));
    csSDK_int32 const channel_type = parameters.integer(ADBEAudioNumChannels);
    csSDK_int32 const channel_count = GetNumberOfAudioChannels(channel_type);
    PrTime ticks_per_sample = 0;
    settings.timeSuite->GetTicksPerAudioSample(rate, &ticks_per_sample);
    if (channel_count < 1 || ticks_per_sample <= 0)
        return static_cast<csSDK_int32>(suiteError_InvalidParms);

    audio_renderer const renderer(*settings.audioSuite, *exportRec, channel_type, rate);
    if (renderer.error())
        return renderer.error();
    // A byte count of prWriteFile has 32 bits.
    csSDK_uint32 const most = std::min(renderer.most_samples(parameters.ticks(ADBEVideoFPS)), 1u << 28);
    if (most == 0)
        return static_cast<csSDK_int32>(suiteError_Fail);

    PrAudioSample const total = duration / ticks_per_sample;
    std::vector<float> block(static_cast<std::size_t>(std::clamp<PrAudioSample>(total, 0, most)) *
                             static_cast<std::size_t>(channel_count));
    std::vector<float*> channels(static_cast<std::size_t>(channel_count));
    for (std::size_t channel = 0; channel < channels.size(); ++channel)
        channels[channel] = block.data() + channel * (block.size() / channels.size());

    for (PrAudioSample done = 0; done < total;) {
        PrAudioSample const chunk = std::min<PrAudioSample>(most, total - done);
        if (csSDK_int32 const error = renderer.render(static_cast<csSDK_uint32>(chunk), channels.data()))
            return error;
        if (csSDK_int32 const error = write_chunk(settings.file, channels, chunk, total))
            return error;
        done += chunk;
    }
    return 0;
}

PrAudioSample calculateAudioRequest(imImportAudioRec7 const* request, PrAudioSample total, PrAudioSample* position,
                                    PrAudioSample* start, PrAudioSample* count)
{
    PrAudioSample const wanted = request->position;
    PrAudioSample const size = request->size;
    *start = wanted >= 0 ? wanted : *position;
    // Compared without adding, since a position may be anything.
    if (*start <= total - size) {
        *count = size;
        *position = *start + size;
    } else {
        *count = total - *start;
        *position = total;
    }
    return *start;
}

void setPointerToAudioStart(SDK_ImporterRec const* importer, PrAudioSample offset, imFileRef file)
{
    FSSetForkPosition(fork_of(file), fsFromStart, SDK_AudioStart(importer->header) + offset * sample_bytes);
}

csSDK_int32 readAudioToBuffer(PrAudioSample count, PrAudioSample total, csSDK_int32 channels, imFileRef file,
                              float** buffers)
{
    if (count < 0)
        return SDK_ReadFailed;
    for (csSDK_int32 channel = 0; channel < channels; ++channel) {
        auto const bytes = static_cast<ByteCount>(count * sample_bytes);
        if (FSReadFork(fork_of(file), fsAtMark, 0, bytes, buffers[channel], nullptr))
            return SDK_ReadFailed;
        if (FSSetForkPosition(fork_of(file), fsFromMark, (total - count) * sample_bytes))
            return SDK_ReadFailed;
    }
    return 0;
}
