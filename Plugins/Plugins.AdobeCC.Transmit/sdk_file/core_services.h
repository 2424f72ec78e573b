// The file-fork calls of Core Services. On macOS they are the system's; elsewhere the same calls work on ordinary
// files, whose descriptor is the fork reference number and whose file offset is the mark.
#pragma once

#include <PrSDKImport.h>

#include <cstdint>

#if __has_include(<CoreServices/CoreServices.h>)
#include <CoreServices/CoreServices.h>
#else

typedef std::int16_t OSErr;
typedef std::int64_t SInt64;
typedef std::uint16_t UInt16;
typedef unsigned long ByteCount;
typedef int FSIORefNum;

enum : UInt16 { fsAtMark = 0, fsFromStart = 1, fsFromLEOF = 2, fsFromMark = 3 };
enum : OSErr { noErr = 0, dskFulErr = -34, ioErr = -36, eofErr = -39, posErr = -40, paramErr = -50, rfNumErr = -51 };

extern "C" {

// Reads at a position, moves the mark behind what was read, and gives eofErr when the file ended before requestCount.
OSErr FSReadFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                 void* buffer, ByteCount* actualCount);

// Writes at a position and moves the mark behind what was written.
OSErr FSWriteFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount requestCount,
                  void const* buffer, ByteCount* actualCount);

// Moves the mark, also past the end of the file; posErr before its beginning.
OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset);
}

#endif

// The host's file reference carries the fork reference number in a pointer's place.
inline FSIORefNum fork_of(imFileRef file) { return static_cast<FSIORefNum>(reinterpret_cast<std::intptr_t>(file)); }

inline imFileRef file_of(FSIORefNum fork) { return reinterpret_cast<imFileRef>(static_cast<std::intptr_t>(fork)); }
