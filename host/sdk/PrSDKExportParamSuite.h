// Values of an exporter's parameters, addressed by text identifiers.
#pragma once

#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"

#define kPrSDKExportParamSuite "MediaCore Export Param Suite"

#define ADBEVideoCodec "ADBEVideoCodec"
#define ADBEVideoWidth "ADBEVideoWidth"
#define ADBEVideoHeight "ADBEVideoHeight"
#define ADBEVideoFPS "ADBEVideoFPS"
#define ADBEVideoFieldType "ADBEVideoFieldType"
#define ADBEVideoAspect "ADBEVideoAspect"
#define ADBEAudioNumChannels "ADBEAudioNumChannels"
#define ADBEAudioRatePerSecond "ADBEAudioRatePerSecond"

#pragma pack(push, 1)

typedef struct exRatioValue
{
    csSDK_int32 numerator;
    csSDK_int32 denominator;
} exRatioValue;

typedef struct exParamValues
{
    union {
        csSDK_int32 intValue;
        PrTime timeValue;
        double floatValue;
        exRatioValue ratioValue;
    } value;
} exParamValues;

typedef struct PrSDKExportParamSuite
{
    prSuiteError (*GetParamValue)(csSDK_uint32 inExporterPluginID, csSDK_int32 inMultiGroupIndex,
                                  char const* inIdentifier, exParamValues* outParamValues);
} PrSDKExportParamSuite;

#pragma pack(pop)
