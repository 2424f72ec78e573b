// The SDK_File format: a fixed header, then the frames, each followed by "++++", then planar float audio.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

#include "host/export_adapter.h"

#include <cstddef>

#pragma pack(push, 1)

// The first bytes of a file, as they stand there, least significant byte first.
struct SDK_FileHeader
{
    char signature[18]; // "PREMIERE SDK_FILE "
    csSDK_int32 version;
    csSDK_int32 hasAudio;
    csSDK_uint32 audioSubtype;
    csSDK_int32 hasVideo;
    csSDK_uint32 videoCodec;
    csSDK_int32 reserved;
    csSDK_int32 bitDepth;
    csSDK_int32 width;
    csSDK_int32 height;
    csSDK_int32 frameCount;
    csSDK_int64 sampleCount; // a channel
    csSDK_int32 channelType; // PrAudioChannelType
    csSDK_int64 ticksPerFrame;
    double sampleRate;
    csSDK_int32 fieldType;
    csSDK_int32 aspectNumerator; // of a pixel
    csSDK_int32 aspectDenominator;
    char unused[504]; // zero
};

#pragma pack(pop)

static_assert(sizeof(SDK_FileHeader) == 602);
static_assert(offsetof(SDK_FileHeader, version) == 18 && offsetof(SDK_FileHeader, hasAudio) == 22);
static_assert(offsetof(SDK_FileHeader, audioSubtype) == 26 && offsetof(SDK_FileHeader, hasVideo) == 30);
static_assert(offsetof(SDK_FileHeader, videoCodec) == 34 && offsetof(SDK_FileHeader, reserved) == 38);
static_assert(offsetof(SDK_FileHeader, bitDepth) == 42 && offsetof(SDK_FileHeader, width) == 46);
static_assert(offsetof(SDK_FileHeader, height) == 50 && offsetof(SDK_FileHeader, frameCount) == 54);
static_assert(offsetof(SDK_FileHeader, sampleCount) == 58 && offsetof(SDK_FileHeader, channelType) == 66);
static_assert(offsetof(SDK_FileHeader, ticksPerFrame) == 70 && offsetof(SDK_FileHeader, sampleRate) == 78);
static_assert(offsetof(SDK_FileHeader, fieldType) == 86 && offsetof(SDK_FileHeader, aspectNumerator) == 90);
static_assert(offsetof(SDK_FileHeader, aspectDenominator) == 94 && offsetof(SDK_FileHeader, unused) == 98);

inline constexpr char SDK_FileSignature[] = "PREMIERE SDK_FILE ";
inline constexpr csSDK_int32 SDK_FileVersion = 5;
inline constexpr csSDK_uint32 SDK_AudioSubtypeRAW = 0x5241575F; // 'RAW_'
inline constexpr csSDK_uint32 SDK_CodecRAW = 0x52415720;        // 'RAW '
inline constexpr csSDK_uint32 SDK_Codec10yu = 0x31307975;       // '10yu'
inline constexpr csSDK_uint32 SDK_CodecRLE = 0x524C455F;        // 'RLE_'
inline constexpr char SDK_FrameEnd[] = "++++";
inline constexpr csSDK_int32 SDK_FrameEndSize = 4;

// Results of the writing functions, beside 0 and the system's own.
inline constexpr csSDK_int32 SDK_WroteTooLittle = 4;
inline constexpr csSDK_int32 SDK_NoPictureSize = 6;
// Result of the reading functions, beside 0.
inline constexpr csSDK_int32 SDK_ReadFailed = 2;

// What an exporter keeps behind exDoExportRec::privateData. The suites are the host's, acquired by whoever fills this
// in.
struct SDK_ExporterSettings
{
    PrSDKExportParamSuite const* exportParamSuite;
    PrSDKTimeSuite const* timeSuite;
    PrSDKPPixSuite const* ppixSuite;
    PrSDKSequenceRenderSuite const* renderSuite;
    PrSDKSequenceAudioSuite const* audioSuite;
    csSDK_uint32 videoRenderID;
    imFileRef file; // open for writing, owned by the host
};

// Writes the header at the beginning of the file from the export's parameters. Duration in ticks. 6, and nothing is
// written, when the picture has no size; else 0 or what prWriteFile gives.
QUILLO_EXPORTED csSDK_int32 WriteSDK_FileHeader(exportStdParms* stdParms, exDoExportRec* exportRec, PrTime duration);

// Does nothing.
QUILLO_EXPORTED void WriteMarkerAndProjectDataToFile(exportStdParms* stdParms, exDoExportRec* exportRec);

// Writes *count bytes at the mark and stores how many were written. 0; 4 if fewer; the system's error if there is one.
QUILLO_EXPORTED csSDK_int32 prWriteFile(imFileRef file, void const* buffer, csSDK_int32* count);

// Of a header that was read: where the audio begins, in bytes from the start of the file.
csSDK_int64 SDK_AudioStart(SDK_FileHeader const& header);

// 1, 2 or 6 for a channel type of 1, 2 or 3, else -1.
QUILLO_EXPORTED csSDK_int32 GetNumberOfAudioChannels(csSDK_int32 channelType);
