// Records that the host gives to an exporter.
#pragma once

#include "PrSDKTimeSuite.h"
#include "PrSDKTypes.h"
#include "SPBasic.h"

#include "PrSDKPlugUtilities.h"

#pragma pack(push, 1)

typedef struct exportStdParms
{
    csSDK_int32 interfaceVer;
    plugGetSPBasicSuiteFunc* getSPBasicSuite;
} exportStdParms;

typedef struct exDoExportRec
{
    csSDK_uint32 exporterPluginID;
    void* privateData; // the exporter's own
    csSDK_uint32 fileType;
    csSDK_int32 exportAudio;
    csSDK_int32 exportVideo;
    PrTime startTime;
    PrTime endTime; // exclusive
    csSDK_uint32 fileObject;
    PrTimelineID timelineData;
    csSDK_int32 reserveMetaDataSpace;
    csSDK_int32 maximumRenderQuality;
    csSDK_int32 embedCaptions;
} exDoExportRec;

#pragma pack(pop)

static_assert(sizeof(exportStdParms) == 12 && offsetof(exportStdParms, getSPBasicSuite) == 4);
static_assert(sizeof(exDoExportRec) == 60 && offsetof(exDoExportRec, exporterPluginID) == 0);
static_assert(offsetof(exDoExportRec, privateData) == 4 && offsetof(exDoExportRec, fileType) == 12);
static_assert(offsetof(exDoExportRec, exportAudio) == 16 && offsetof(exDoExportRec, exportVideo) == 20);
static_assert(offsetof(exDoExportRec, startTime) == 24 && offsetof(exDoExportRec, endTime) == 32);
static_assert(offsetof(exDoExportRec, fileObject) == 40 && offsetof(exDoExportRec, timelineData) == 44);
static_assert(offsetof(exDoExportRec, reserveMetaDataSpace) == 48);
static_assert(offsetof(exDoExportRec, maximumRenderQuality) == 52 && offsetof(exDoExportRec, embedCaptions) == 56);
