// The three Core Foundation calls that are used: the system's header, or our declarations where a build has none.
#pragma once

#if __has_include(<CoreFoundation/CoreFoundation.h>)
#include <CoreFoundation/CoreFoundation.h>
#else

typedef long CFIndex;
typedef unsigned int CFStringEncoding;
typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef void const* CFTypeRef;
typedef struct __CFString const* CFStringRef;
typedef struct __CFAllocator const* CFAllocatorRef;

typedef struct CFRange
{
    CFIndex location;
    CFIndex length;
} CFRange;

enum : CFStringEncoding { kCFStringEncodingUnicode = 0x0100, kCFStringEncodingUTF32LE = 0x1C000100 };

extern "C" {
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, UInt8 const* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean is_external);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 loss, Boolean is_external,
                         UInt8* buffer, CFIndex size, CFIndex* used);
void CFRelease(CFTypeRef object);
}

#endif
