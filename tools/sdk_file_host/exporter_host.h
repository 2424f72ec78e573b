// An exporter's host in small: it renders pictures and sound from a source through the suites that an exporter knows,
// and drives the writing functions of the SDK_File format as a host's export does.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/header.h"

#include <functional>
#include <vector>

namespace quillo::sdk_file {

// A picture as the host keeps it: rows row_bytes apart, the lowest row of the picture first.
struct host_picture
{
    PrPixelFormat format;
    csSDK_int32 row_bytes;
    std::vector<char> pixels;
};

// Where pictures and sound come from. A render result other than 0 goes to the exporter as it is; the picture is then
// not looked at unless it has pixels.
class export_source
{
  public:
    virtual ~export_source() = default;
    virtual prSuiteError render(csSDK_int64 frame, SequenceRender_ParamsRec const& request, host_picture& picture) = 0;
    virtual prSuiteError audio(PrAudioSample first, csSDK_uint32 count, float** channels) = 0;
};

struct export_settings
{
    bool video = true;
    bool audio = true;
    csSDK_uint32 codec = SDK_CodecRAW;
    csSDK_int32 width = 0;
    csSDK_int32 height = 0;
    PrTime ticks_per_frame = 0;
    csSDK_int32 field_type = prFieldsNone;
    exRatioValue pixel_aspect{1, 1};
    csSDK_int32 channel_type = kPrAudioChannelType_Stereo;
    double sample_rate = 48000;
    csSDK_uint32 most_samples = 48000; // that the audio suite gives at once
    PrTime duration = 0;               // ticks
};

// What the host saw of the exporter.
struct export_counts
{
    int frames_given = 0;
    int frames_disposed = 0;
    int audio_renderers_open = 0;
};

constexpr PrTime ticks_per_second = 254016000000;
PrSDKTimeSuite const& time_suite();

class exporter_host
{
  public:
    // The source is the caller's and outlives the host; so does the file, open for writing.
    exporter_host(export_settings const& settings, export_source& source, imFileRef file);
    ~exporter_host();
    exporter_host(exporter_host const&) = delete;
    exporter_host& operator=(exporter_host const&) = delete;

    // Header, every frame, all sound; done(frame) after each frame. The first result that is not 0 ends the export.
    csSDK_int32 run(std::function<void(csSDK_int64)> const& done = {});

    // The record that an exporter is given, for single calls.
    exDoExportRec record();
    csSDK_int64 frame_count() const;
    export_counts const& counts() const { return counts_; }

  private:
    friend struct suite_functions;

    export_settings const settings_;
    export_source& source_;
    SDK_ExporterSettings exporter_;
    csSDK_uint32 id_;
    PrAudioSample next_sample_ = 0;
    export_counts counts_;
};

} // namespace quillo::sdk_file
