// The two little machines in the classic dynamic-linker tables: one adds where the image lies, the other writes
// imports.
#include "tests/support/macho/image.h"

namespace quillo::macho {

namespace {

void add_at(unsigned char* slot, std::uint64_t value)
{
    std::uint64_t there;
    std::memcpy(&there, slot, sizeof there);
    there += value;
    std::memcpy(slot, &there, sizeof there);
}

} // namespace

void image::rebase(bytes opcodes)
{
    auto const slide = reinterpret_cast<std::uint64_t>(base_) - lowest_;
    cursor in(opcodes);
    std::size_t segment = 0;
    std::uint64_t offset = 0;
    auto const run = [&](std::uint64_t times, std::uint64_t skip) {
        for (; times > 0; --times, offset += sizeof(void*) + skip)
            add_at(in_segment(segment, offset), slide);
    };
    while (!in.at_end()) {
        auto const opcode = in.byte();
        auto const immediate = opcode & 0x0Fu;
        switch (opcode & 0xF0) {
        case 0x00:
            return;
        case 0x10:
            break; // the type; pointers are the only one on 64 bits
        case 0x20:
            segment = immediate;
            offset = in.uleb();
            break;
        case 0x30:
            offset += in.uleb();
            break;
        case 0x40:
            offset += immediate * sizeof(void*);
            break;
        case 0x50:
            run(immediate, 0);
            break;
        case 0x60:
            run(in.uleb(), 0);
            break;
        case 0x70:
            run(1, in.uleb());
            break;
        case 0x80: {
            auto const times = in.uleb();
            run(times, in.uleb());
            break;
        }
        default:
            throw std::runtime_error("Mach-O: unknown rebase opcode");
        }
    }
}

void image::bind(bytes opcodes, bool lazy, bool weak, resolver const& resolve)
{
    cursor in(opcodes);
    int ordinal = 0;
    bool optional = false;
    std::string_view symbol;
    std::int64_t addend = 0;
    std::size_t segment = 0;
    std::uint64_t offset = 0;
    auto const run = [&](std::uint64_t times, std::uint64_t skip) {
        for (; times > 0; --times, offset += sizeof(void*) + skip)
            bind_one(ordinal, optional, weak, symbol, in_segment(segment, offset), addend, resolve);
    };
    while (!in.at_end()) {
        auto const opcode = in.byte();
        auto const immediate = opcode & 0x0Fu;
        switch (opcode & 0xF0) {
        case 0x00:
            if (!lazy)
                return;
            break; // each lazy entry ends with one
        case 0x10:
            ordinal = static_cast<int>(immediate);
            break;
        case 0x20:
            ordinal = static_cast<int>(in.uleb());
            break;
        case 0x30:
            ordinal = immediate == 0 ? 0 : static_cast<int>(immediate) - 16;
            break;
        case 0x40:
            optional = (immediate & 1) != 0;
            symbol = in.text();
            break;
        case 0x50:
            break;
        case 0x60:
            addend = in.sleb();
            break;
        case 0x70:
            segment = immediate;
            offset = in.uleb();
            break;
        case 0x80:
            offset += in.uleb();
            break;
        case 0x90:
            run(1, 0);
            break;
        case 0xA0:
            run(1, in.uleb());
            break;
        case 0xB0:
            run(1, immediate * sizeof(void*));
            break;
        case 0xC0: {
            auto const times = in.uleb();
            run(times, in.uleb());
            break;
        }
        default:
            throw std::runtime_error("Mach-O: unknown bind opcode");
        }
    }
}

void image::bind_one(int ordinal, bool optional, bool weak, std::string_view symbol, unsigned char* slot,
                     std::int64_t addend, resolver const& resolve)
{
    void* target = nullptr;
    std::string library;
    if (weak) {
        // Bound to its library already; the image's own definition goes first.
        target = local(symbol);
        if (target == nullptr)
            return;
    } else {
        if (ordinal < 1 || static_cast<std::size_t>(ordinal) > libraries_.size())
            throw std::runtime_error("Mach-O: " + std::string(symbol) + " is not bound to a library");
        library = libraries_[static_cast<std::size_t>(ordinal) - 1];
        target = resolve(library, symbol);
        if (target == nullptr && !optional)
            throw std::runtime_error("Mach-O: nothing stands for " + std::string(symbol) + " of " + library);
    }
    auto const value = reinterpret_cast<std::uint64_t>(target) + static_cast<std::uint64_t>(addend);
    std::memcpy(slot, &value, sizeof value);
}

} // namespace quillo::macho
