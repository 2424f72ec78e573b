// The parts of the Mach-O file format that the loader reads, and a bounded reader for its packed tables.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string_view>

namespace quillo::macho {

using bytes = std::span<unsigned char const>;

constexpr std::uint32_t magic_64 = 0xFEEDFACF;
constexpr std::uint32_t magic_universal = 0xCAFEBABE; // big endian, as everything in the universal header
constexpr std::uint32_t cpu_x86_64 = 0x01000007;
constexpr std::uint32_t cpu_arm64 = 0x0100000C;
constexpr std::uint32_t type_dylib = 6;
constexpr std::uint32_t type_bundle = 8;

struct header
{
    std::uint32_t magic, cpu, cpu_variant, file_type, commands, commands_size, flags, reserved;
};

struct command
{
    std::uint32_t kind, size;
};
constexpr std::uint32_t command_required = 0x80000000;
constexpr std::uint32_t command_symtab = 0x2;
constexpr std::uint32_t command_load_dylib = 0xC;
constexpr std::uint32_t command_id_dylib = 0xD;
constexpr std::uint32_t command_load_weak_dylib = 0x18 | command_required;
constexpr std::uint32_t command_segment = 0x19;
constexpr std::uint32_t command_dyld_info_only = 0x22 | command_required;
constexpr std::uint32_t command_chained_fixups = 0x34 | command_required;

struct segment
{
    command head;
    char name[16];
    std::uint64_t address, size, file_offset, file_size;
    std::uint32_t maximum_protection, protection, sections, flags;
};
constexpr std::uint32_t segment_read_only_after_fixups = 0x10;

struct section
{
    char name[16], segment_name[16];
    std::uint64_t address, size;
    std::uint32_t file_offset, alignment, relocations_offset, relocations, flags, reserved[3];
};
constexpr std::uint32_t section_type_mask = 0xFF;
constexpr std::uint32_t section_initialisers = 0x9;
constexpr std::uint32_t section_thread_local_first = 0x11;
constexpr std::uint32_t section_thread_local_last = 0x15;
constexpr std::uint32_t section_initialiser_offsets = 0x16;

struct symtab
{
    command head;
    std::uint32_t symbols_offset, symbols, strings_offset, strings_size;
};

struct symbol
{
    std::uint32_t name;
    std::uint8_t type, section;
    std::uint16_t description;
    std::uint64_t value;
};
constexpr std::uint8_t symbol_debug = 0xE0;
constexpr std::uint8_t symbol_kind_mask = 0x0E;
constexpr std::uint8_t symbol_in_section = 0x0E;

struct dyld_info
{
    command head;
    std::uint32_t rebase_offset, rebase_size, bind_offset, bind_size, weak_offset, weak_size, lazy_offset, lazy_size,
        exports_offset, exports_size;
};

struct dylib
{
    command head;
    std::uint32_t name_offset, time, current_version, compatibility_version;
};

// Reads one record at a byte offset.
template <class T>
T record_at(bytes data, std::uint64_t offset)
{
    if (offset > data.size() || data.size() - offset < sizeof(T))
        throw std::runtime_error("Mach-O: a record lies outside the file");
    T value;
    std::memcpy(&value, data.data() + offset, sizeof value);
    return value;
}

inline bytes part(bytes data, std::uint64_t offset, std::uint64_t size)
{
    if (offset > data.size() || data.size() - offset < size)
        throw std::runtime_error("Mach-O: a table lies outside the file");
    return data.subspan(offset, size);
}

// Walks a table of opcodes, LEB128 numbers and texts.
class cursor
{
  public:
    explicit cursor(bytes data, std::uint64_t offset = 0) : rest_(part(data, offset, data.size() - offset)) {}

    bool at_end() const { return rest_.empty(); }

    std::uint8_t byte()
    {
        if (rest_.empty())
            throw std::runtime_error("Mach-O: a table ends too early");
        auto const value = rest_.front();
        rest_ = rest_.subspan(1);
        return value;
    }

    std::uint64_t uleb()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            auto const next = byte();
            if (shift < 64)
                value |= std::uint64_t{next & 0x7Fu} << shift;
            if ((next & 0x80) == 0)
                return value;
        }
    }

    std::int64_t sleb()
    {
        std::uint64_t value = 0;
        unsigned shift = 0;
        std::uint8_t next;
        do {
            next = byte();
            if (shift < 64)
                value |= std::uint64_t{next & 0x7Fu} << shift;
            shift += 7;
        } while (next & 0x80);
        if (shift < 64 && (next & 0x40))
            value |= ~std::uint64_t{0} << shift;
        return static_cast<std::int64_t>(value);
    }

    std::string_view text()
    {
        auto const* const start = reinterpret_cast<char const*>(rest_.data());
        std::size_t length = 0;
        while (byte() != 0)
            ++length;
        return {start, length};
    }

  private:
    bytes rest_;
};

} // namespace quillo::macho
