#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"

#ifndef __APPLE__

#include <cerrno>
#include <unistd.h>

namespace {

OSErr result_of(int error)
{
    switch (error) {
    case EBADF:
        return rfNumErr;
    case ENOSPC:
    case EFBIG:
    case EDQUOT:
        return dskFulErr;
    default:
        return ioErr;
    }
}

// Moves at most count bytes with one of read() and write() until it is done, ends short or fails.
template <class Call>
OSErr move_bytes(Call call, ByteCount count, ByteCount& moved)
{
    moved = 0;
    while (moved < count) {
        ssize_t const step = call(moved, count - moved);
        if (step > 0)
            moved += static_cast<ByteCount>(step);
        else if (step == 0)
            return noErr;
        else if (errno != EINTR)
            return result_of(errno);
    }
    return noErr;
}

} // namespace

OSErr FSSetForkPosition(FSIORefNum fork, UInt16 mode, SInt64 offset)
{
    SInt64 base = 0;
    if (mode == fsAtMark || mode == fsFromMark)
        base = lseek(fork, 0, SEEK_CUR);
    else if (mode == fsFromLEOF)
        base = lseek(fork, 0, SEEK_END);
    else if (mode != fsFromStart)
        return paramErr;
    if (base < 0)
        return result_of(errno);
    SInt64 target = 0;
    if (__builtin_add_overflow(base, mode == fsAtMark ? 0 : offset, &target) || target < 0)
        return posErr;
    return lseek(fork, target, SEEK_SET) < 0 ? result_of(errno) : static_cast<OSErr>(noErr);
}

OSErr FSReadFork(FSIORefNum fork, UInt16 mode, SInt64 offset, ByteCount count, void* buffer, ByteCount* actual)
{
    ByteCount moved = 0;
    OSErr result = FSSetForkPosition(fork, mode, offset);
    if (result == noErr)
        result =
            move_bytes([&](ByteCount at, ByteCount left) { return read(fork, static_cast<char*>(buffer) + at, left); },
                       count, moved);
    if (actual)
        *actual = moved;
    return result == noErr && moved < count ? static_cast<OSErr>(eofErr) : result;
}

OSErr FSWriteFork(FSIORefNum fork, UInt16 mode, SInt64 offset, ByteCount count, void const* buffer, ByteCount* actual)
{
    ByteCount moved = 0;
    OSErr result = FSSetForkPosition(fork, mode, offset);
    if (result == noErr)
        result = move_bytes(
            [&](ByteCount at, ByteCount left) { return write(fork, static_cast<char const*>(buffer) + at, left); },
            count, moved);
    if (actual)
        *actual = moved;
    return result;
}

#endif
