// A media file as the source of an export.
#pragma once

#include "tools/sdk_file_host/exporter_host.h"
#include "tools/stand_in_host/source.h"

namespace quillo::sdk_file {

class media_export : public export_source
{
  public:
    // The clip is the caller's and outlives this.
    explicit media_export(stand_in::source& clip) : clip_(clip) {}

    prSuiteError render(csSDK_int64 frame, SequenceRender_ParamsRec const& request, host_picture& picture) override;
    prSuiteError audio(PrAudioSample first, csSDK_uint32 count, float** channels) override;

  private:
    stand_in::source& clip_;
    host_picture last_{}; // shown again where the clip has ended
};

// What is exported of a clip: its size, rate, fields and sound. Throws std::runtime_error, in one line, where the
// format has no place for it.
export_settings settings_for(stand_in::source const& clip, csSDK_uint32 codec, bool with_audio);

} // namespace quillo::sdk_file
