// Records that the host gives to an importer.
#pragma once

#include "PrSDKTypes.h"

// A file that the host opened; on macOS it carries a fork reference number.
typedef void* imFileRef;

#pragma pack(push, 1)

typedef struct imImportAudioRec7
{
    PrAudioSample position; // first sample frame; negative: go on after the request before
    csSDK_uint32 size;      // sample frames
    float** buffer;         // the host's, one a channel
    void* privatedata;      // the importer's own
    void* prefs;
} imImportAudioRec7;

#pragma pack(pop)

static_assert(sizeof(imImportAudioRec7) == 36 && offsetof(imImportAudioRec7, position) == 0);
static_assert(offsetof(imImportAudioRec7, size) == 8 && offsetof(imImportAudioRec7, buffer) == 12);
static_assert(offsetof(imImportAudioRec7, privatedata) == 20 && offsetof(imImportAudioRec7, prefs) == 28);
