#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/utf16.h"

#if defined(__APPLE__)
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_foundation.h"
#endif

namespace quillo {

static_assert(sizeof(wchar_t) == 4, "wide characters are UTF-32");

#if defined(__APPLE__)

void utf16_from_wide(wchar_t const* text, std::size_t length, prUTF16Char* units, std::size_t limit)
{
    CFStringRef const string =
        CFStringCreateWithBytes(nullptr, reinterpret_cast<UInt8 const*>(text), static_cast<CFIndex>(4 * length),
                                kCFStringEncodingUTF32LE, false);
    CFRange range;
    range.location = 0;
    range.length = static_cast<CFIndex>(limit);
    CFStringGetBytes(string, range, kCFStringEncodingUnicode, 0, false, reinterpret_cast<UInt8*>(units),
                     static_cast<CFIndex>(2 * limit), nullptr);
    CFRelease(string);
}

#else

void utf16_from_wide(wchar_t const* text, std::size_t length, prUTF16Char* units, std::size_t limit)
{
    std::size_t written = 0;
    auto const put = [&](unsigned long unit) {
        if (written < limit)
            units[written++] = static_cast<prUTF16Char>(unit);
    };
    for (std::size_t i = 0; i < length; ++i) {
        auto const character = static_cast<unsigned long>(text[i]);
        if (character < 0x10000) {
            put(character);
        } else {
            put(0xD800 + ((character - 0x10000) >> 10));
            put(0xDC00 + (character & 0x3FF));
        }
    }
}

#endif

} // namespace quillo
