#include "tools/sdk_file_host/exporter_host.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"

#include <map>
#include <memory>
#include <mutex>
#include <string_view>

namespace quillo::sdk_file {

namespace {

// The suites are plain functions; an ID leads back to the host.
class registry
{
  public:
    csSDK_uint32 add(exporter_host* host)
    {
        std::lock_guard const lock(mutex_);
        hosts_[++last_] = host;
        return last_;
    }

    void remove(csSDK_uint32 id)
    {
        std::lock_guard const lock(mutex_);
        hosts_.erase(id);
    }

    exporter_host* find(csSDK_uint32 id)
    {
        std::lock_guard const lock(mutex_);
        auto const found = hosts_.find(id);
        return found == hosts_.end() ? nullptr : found->second;
    }

  private:
    std::mutex mutex_;
    std::map<csSDK_uint32, exporter_host*> hosts_;
    csSDK_uint32 last_ = 0;
};

registry& hosts()
{
    static registry all;
    return all;
}

constexpr auto not_valid = static_cast<prSuiteError>(suiteError_IDNotValid);

// What a frame handle points at.
struct host_frame
{
    PPix* handle = nullptr; // a PPixHand is the address of this
    host_picture picture;
    int* disposed = nullptr;
};

host_frame* frame_of(PPixHand handle) { return reinterpret_cast<host_frame*>(handle); }

} // namespace

struct suite_functions
{
    static prSuiteError get_param(csSDK_uint32 id, csSDK_int32, char const* key, exParamValues* values)
    {
        exporter_host const* const host = hosts().find(id);
        if (!host)
            return not_valid;
        export_settings const& s = host->settings_;
        std::string_view const name = key;
        if (name == ADBEVideoCodec)
            values->value.intValue = static_cast<csSDK_int32>(s.codec);
        else if (name == ADBEVideoWidth)
            values->value.intValue = s.width;
        else if (name == ADBEVideoHeight)
            values->value.intValue = s.height;
        else if (name == ADBEVideoFPS)
            values->value.timeValue = s.ticks_per_frame;
        else if (name == ADBEVideoFieldType)
            values->value.intValue = s.field_type;
        else if (name == ADBEVideoAspect)
            values->value.ratioValue = s.pixel_aspect;
        else if (name == ADBEAudioNumChannels)
            values->value.intValue = s.channel_type;
        else if (name == ADBEAudioRatePerSecond)
            values->value.floatValue = s.sample_rate;
        else
            return not_valid;
        return suiteError_NoError;
    }

    static prSuiteError render(csSDK_uint32 id, PrTime time, SequenceRender_ParamsRec* request, PrRenderCacheType,
                               SequenceRender_GetFrameReturnRec* reply)
    {
        exporter_host* const host = hosts().find(id);
        if (!host)
            return not_valid;
        auto frame = std::make_unique<host_frame>();
        prSuiteError const result =
            host->source_.render(time / host->settings_.ticks_per_frame, *request, frame->picture);
        reply->outFrame = nullptr;
        if (!frame->picture.pixels.empty()) {
            ++host->counts_.frames_given;
            frame->disposed = &host->counts_.frames_disposed;
            reply->outFrame = &frame.release()->handle;
        }
        return result;
    }

    static prSuiteError make_audio(csSDK_uint32 id, PrTime, PrAudioChannelType, PrAudioSampleType, float,
                                   csSDK_uint32* renderer)
    {
        exporter_host* const host = hosts().find(id);
        if (!host)
            return not_valid;
        host->next_sample_ = 0;
        ++host->counts_.audio_renderers_open;
        *renderer = id;
        return suiteError_NoError;
    }

    static prSuiteError release_audio(csSDK_uint32, csSDK_uint32 renderer)
    {
        exporter_host* const host = hosts().find(renderer);
        if (!host)
            return not_valid;
        --host->counts_.audio_renderers_open;
        return suiteError_NoError;
    }

    static prSuiteError get_audio(csSDK_uint32 renderer, csSDK_uint32 count, float** channels, char)
    {
        exporter_host* const host = hosts().find(renderer);
        if (!host || count > host->settings_.most_samples)
            return not_valid;
        prSuiteError const result = host->source_.audio(host->next_sample_, count, channels);
        host->next_sample_ += count;
        return result;
    }

    static prSuiteError most_samples(csSDK_uint32 renderer, PrTime, csSDK_uint32* most)
    {
        exporter_host* const host = hosts().find(renderer);
        if (!host)
            return not_valid;
        *most = host->settings_.most_samples;
        return suiteError_NoError;
    }

    static prSuiteError dispose(PPixHand handle)
    {
        host_frame* const frame = frame_of(handle);
        ++*frame->disposed;
        delete frame;
        return suiteError_NoError;
    }

    static prSuiteError pixels(PPixHand handle, PrPPixBufferAccess access, char** address)
    {
        bool const readable = access == PrPPixBufferAccess_ReadOnly;
        *address = readable ? frame_of(handle)->picture.pixels.data() : nullptr;
        return readable ? static_cast<prSuiteError>(suiteError_NoError) : static_cast<prSuiteError>(suiteError_Fail);
    }

    static prSuiteError row_bytes(PPixHand handle, csSDK_int32* bytes)
    {
        *bytes = frame_of(handle)->picture.row_bytes;
        return suiteError_NoError;
    }

    static prSuiteError pixel_format(PPixHand handle, PrPixelFormat* format)
    {
        *format = frame_of(handle)->picture.format;
        return suiteError_NoError;
    }
};

namespace {

prSuiteError ticks_per_second_of_host(PrTime* ticks)
{
    *ticks = ticks_per_second;
    return suiteError_NoError;
}

prSuiteError ticks_per_frame_of(PrVideoFrameRates rate, PrTime* ticks)
{
    static constexpr PrTime durations[] = {0,          10594584000, 10584000000, 10160640000, 8475667200,
                                           8467200000, 5080320000,  4237833600,  4233600000};
    if (rate < kVideoFrameRate_24Drop || rate > kVideoFrameRate_60)
        return static_cast<prSuiteError>(suiteError_InvalidParms);
    *ticks = durations[rate];
    return suiteError_NoError;
}

prSuiteError ticks_per_sample_of(float rate, PrTime* ticks)
{
    auto const whole = static_cast<PrTime>(rate);
    if (whole <= 0)
        return static_cast<prSuiteError>(suiteError_InvalidParms);
    *ticks = ticks_per_second / whole;
    return ticks_per_second % whole ? static_cast<prSuiteError>(suiteError_TimeRoundedAudioRate)
                                    : static_cast<prSuiteError>(suiteError_NoError);
}

PrSDKExportParamSuite const param_suite{suite_functions::get_param};

PrSDKSequenceRenderSuite render_suite()
{
    PrSDKSequenceRenderSuite suite{};
    suite.RenderVideoFrame = suite_functions::render;
    return suite;
}

PrSDKSequenceAudioSuite audio_suite()
{
    PrSDKSequenceAudioSuite suite{};
    suite.MakeAudioRenderer = suite_functions::make_audio;
    suite.ReleaseAudioRenderer = suite_functions::release_audio;
    suite.GetAudio = suite_functions::get_audio;
    suite.GetMaxBlip = suite_functions::most_samples;
    return suite;
}

PrSDKPPixSuite ppix_suite()
{
    PrSDKPPixSuite suite{};
    suite.Dispose = suite_functions::dispose;
    suite.GetPixels = suite_functions::pixels;
    suite.GetRowBytes = suite_functions::row_bytes;
    suite.GetPixelFormat = suite_functions::pixel_format;
    return suite;
}

} // namespace

PrSDKTimeSuite const& time_suite()
{
    static PrSDKTimeSuite const suite{ticks_per_second_of_host, ticks_per_frame_of, ticks_per_sample_of};
    return suite;
}

exporter_host::exporter_host(export_settings const& settings, export_source& source, imFileRef file)
    : settings_(settings), source_(source), id_(hosts().add(this))
{
    static PrSDKSequenceRenderSuite const render = render_suite();
    static PrSDKSequenceAudioSuite const audio = audio_suite();
    static PrSDKPPixSuite const ppix = ppix_suite();
    exporter_ = {&param_suite, &time_suite(), &ppix, &render, &audio, id_, file};
}

exporter_host::~exporter_host() { hosts().remove(id_); }

exDoExportRec exporter_host::record()
{
    exDoExportRec record{};
    record.exporterPluginID = id_;
    record.privateData = &exporter_;
    record.exportAudio = settings_.audio;
    record.exportVideo = settings_.video;
    record.endTime = settings_.duration;
    return record;
}

csSDK_int64 exporter_host::frame_count() const
{
    return settings_.video && settings_.ticks_per_frame > 0 ? settings_.duration / settings_.ticks_per_frame : 0;
}

csSDK_int32 exporter_host::run(std::function<void(csSDK_int64)> const& done)
{
    exDoExportRec rec = record();
    exportStdParms standard{};
    if (csSDK_int32 const result = WriteSDK_FileHeader(&standard, &rec, settings_.duration))
        return result;
    for (csSDK_int64 frame = 0; frame < frame_count(); ++frame) {
        if (csSDK_int32 const result = RenderAndWriteVideoFrame(frame * settings_.ticks_per_frame, &rec))
            return result;
        if (done)
            done(frame);
    }
    return settings_.audio ? RenderAndWriteAllAudio(&rec, settings_.duration) : 0;
}

} // namespace quillo::sdk_file
