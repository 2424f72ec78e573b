// Frames of an SDK_File: rendered by the host and written one after the other, read by index.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/header.h"

// Renders the frame at time (ticks) with the export's size, pixel aspect ratio and field type, and appends it at the
// mark: BGRA bytes, V410 words for the codec '10yu', no pixels for 'RLE_', then "++++". Gives the host's result of the
// render, suiteError_Fail when the host's rows are shorter than the picture's, or, when all went well up to there, the
// result of writing. A frame that is not written leaves the file as it was.
QUILLO_EXPORTED csSDK_int32 RenderAndWriteVideoFrame(PrTime time, exDoExportRec* exportRec);

// Reads frame frameIndex of frameBytes bytes each into buffer. 2 when it cannot be read whole, else 0.
QUILLO_EXPORTED csSDK_int32 ReadSDK_File(imFileRef file, csSDK_int32 frameBytes, csSDK_int32 frameIndex, char* buffer);
