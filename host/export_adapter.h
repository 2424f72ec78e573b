// The exporter's and importer's interface where its names are not published: how a parameter is read, and which suites
// an exporter works with. Everything else uses published names.
#pragma once

#include <PrSDKExport.h>
#include <PrSDKExportParamSuite.h>
#include <PrSDKImport.h>
#include <PrSDKPPixSuite.h>
#include <PrSDKSequenceAudioSuite.h>
#include <PrSDKSequenceRenderSuite.h>
#include <PrSDKTimeSuite.h>

#include <cstdint>

namespace quillo::host {

// The parameters of one exporter, all in its first group. A value that the host does not know reads as 0.
class export_parameters
{
  public:
    export_parameters(PrSDKExportParamSuite const& suite, csSDK_uint32 exporter) : suite_(suite), exporter_(exporter) {}

    csSDK_int32 integer(char const* key) const { return read(key).value.intValue; }
    csSDK_int64 ticks(char const* key) const { return read(key).value.timeValue; }
    double real(char const* key) const { return read(key).value.floatValue; }
    exRatioValue ratio(char const* key) const { return read(key).value.ratioValue; }

  private:
    exParamValues read(char const* key) const
    {
        exParamValues values{};
        suite_.GetParamValue(exporter_, 0, key, &values);
        return values;
    }

    PrSDKExportParamSuite const& suite_;
    csSDK_uint32 exporter_;
};

} // namespace quillo::host
