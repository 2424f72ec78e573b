// Sound of an SDK_File: planar floats, all samples of channel 0, then all of channel 1, and so on.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/header.h"

// What an importer keeps behind imImportAudioRec7::privatedata.
struct SDK_ImporterRec
{
    SDK_FileHeader header; // sizes checked by whoever read it
    imFileRef file;
    PrAudioSample position; // where a request without a position goes on
};

// Renders all sound of the export and writes it from the mark on. Duration in ticks. 0, the host's error, or the result
// of writing.
QUILLO_EXPORTED csSDK_int32 RenderAndWriteAllAudio(exDoExportRec* exportRec, PrTime duration);

// Which samples a request means: from its position, or, when that is negative, from *position; cut at the total. Stores
// start and count, moves *position behind them, and returns start.
QUILLO_EXPORTED PrAudioSample calculateAudioRequest(imImportAudioRec7 const* request, PrAudioSample total,
                                                    PrAudioSample* position, PrAudioSample* start,
                                                    PrAudioSample* count);

// Moves the mark to sample offset of channel 0.
QUILLO_EXPORTED void setPointerToAudioStart(SDK_ImporterRec const* importer, PrAudioSample offset, imFileRef file);

// Reads count samples of each channel from the mark on; channels lie total samples apart. 2 when they cannot all be
// read, else 0.
QUILLO_EXPORTED csSDK_int32 readAudioToBuffer(PrAudioSample count, PrAudioSample total, csSDK_int32 channels,
                                              imFileRef file, float** buffers);
