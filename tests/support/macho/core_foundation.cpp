#include "tests/support/macho/core_foundation.h"

#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace quillo::macho {

namespace {

constexpr unsigned utf32_little_endian = 0x1C000100;
constexpr unsigned utf16_of_the_machine = 0x0100;

std::atomic<int> living{0};

struct range
{
    long location, length;
};

void const* create_with_bytes(void const* allocator, unsigned char const* bytes, long count, unsigned encoding,
                              unsigned char is_external)
{
    if (allocator != nullptr || encoding != utf32_little_endian || is_external)
        std::abort(); // nobody asks for anything else
    if (count % 4 != 0)
        return nullptr;
    auto* const made = new std::u16string;
    for (long at = 0; at < count; at += 4) {
        std::uint32_t point;
        std::memcpy(&point, bytes + at, sizeof point);
        if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) {
            delete made;
            return nullptr;
        }
        if (point >= 0x10000) {
            made->push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
            point = 0xDC00 | (point & 0x3FF);
        }
        made->push_back(static_cast<char16_t>(point));
    }
    ++living;
    return made;
}

// Gives the number of units converted, and through used the bytes.
long get_bytes(std::u16string const* string, range wanted, unsigned encoding, unsigned char, unsigned char is_external,
               unsigned char* buffer, long size, long* used)
{
    if (encoding != utf16_of_the_machine || is_external)
        std::abort();
    auto const length = static_cast<long>(string->size());
    if (wanted.location < 0 || wanted.length < 0 || wanted.location + wanted.length > length)
        std::abort(); // Core Foundation raises an exception
    long const units = std::min(wanted.length, size / 2);
    if (buffer != nullptr)
        std::memcpy(buffer, string->data() + wanted.location, static_cast<std::size_t>(2 * units));
    if (used != nullptr)
        *used = 2 * units;
    return units;
}

void release(std::u16string const* string)
{
    if (string == nullptr)
        std::abort(); // as Core Foundation does
    --living;
    delete string;
}

} // namespace

std::span<adapter const> core_foundation_adapters()
{
    static std::array const table = {adapt("_CFStringCreateWithBytes", create_with_bytes),
                                     adapt("_CFStringGetBytes", get_bytes), adapt("_CFRelease", release)};
    return table;
}

std::span<adapter const> core_services_adapters()
{
    static std::array const table = {adapt("_FSReadFork", FSReadFork), adapt("_FSWriteFork", FSWriteFork),
                                     adapt("_FSSetForkPosition", FSSetForkPosition)};
    return table;
}

int living_strings() { return living; }

} // namespace quillo::macho
