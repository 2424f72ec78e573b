#include "tests/support/macho/unwind.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <stdexcept>

extern "C" void __register_frame(void const*);
extern "C" void __deregister_frame(void const*);

namespace quillo::macho {

namespace {

// Of a compact encoding.
constexpr std::uint32_t mode_mask = 0x0F000000;
constexpr std::uint32_t mode_frame_pointer = 0x01000000;
constexpr std::uint32_t mode_no_frame_large = 0x03000000;
constexpr std::uint32_t mode_dwarf = 0x04000000;
constexpr std::uint32_t has_language_data = 0x40000000;

// The compact numbers 1..6 are rbx r12 r13 r14 r15 rbp.
constexpr std::array<std::uint8_t, 7> dwarf_register = {0, 3, 12, 13, 14, 15, 6};
constexpr std::uint8_t dwarf_rbp = 6;
constexpr std::uint8_t dwarf_rsp = 7;
constexpr std::uint8_t dwarf_return_address = 16;

template <class T>
T read(unsigned char const* from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

std::uint32_t word(unsigned char const* table, std::uint32_t index)
{
    return read<std::uint32_t>(table + 4 * std::size_t{index});
}

class writer
{
  public:
    void byte(unsigned value) { data_.push_back(static_cast<unsigned char>(value)); }

    void word(std::uint32_t value) { put(&value, sizeof value); }

    void pointer(void const* value) { put(&value, sizeof value); }

    void uleb(std::uint64_t value)
    {
        for (; value >= 0x80; value >>= 7)
            byte(static_cast<unsigned>(value & 0x7F) | 0x80);
        byte(static_cast<unsigned>(value));
    }

    void define_frame(std::uint8_t register_number, std::uint64_t offset)
    {
        byte(0x0C);
        uleb(register_number);
        uleb(offset);
    }

    // The register was saved so many words below the frame's address.
    void saved(std::uint8_t register_number, std::uint64_t words_below)
    {
        byte(0x80u | register_number);
        uleb(words_below);
    }

    // Ends the record that starts at start: pads it and writes its length.
    void finish(std::size_t start)
    {
        while ((data_.size() - start) % 8 != 0)
            byte(0); // no operation
        auto const length = static_cast<std::uint32_t>(data_.size() - start - 4);
        std::memcpy(data_.data() + start, &length, sizeof length);
    }

    std::size_t size() const { return data_.size(); }
    unsigned char const* data() const { return data_.data(); }

  private:
    void put(void const* from, std::size_t size)
    {
        auto const* const first = static_cast<unsigned char const*>(from);
        data_.insert(data_.end(), first, first + size);
    }

    std::vector<unsigned char> data_;
};

// The registers that a frame without frame pointer saved, in the order of their places, from their packed permutation.
std::vector<std::uint8_t> permuted_registers(std::uint32_t count, std::uint32_t permutation)
{
    // Digit i counts among the registers not named yet, so it has 6 - i values; the last of six has one.
    std::uint32_t weight = 1;
    for (std::uint32_t i = 1; i < count; ++i)
        weight *= 6 - i;
    std::vector<std::uint8_t> left = {1, 2, 3, 4, 5, 6};
    std::vector<std::uint8_t> order;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t const digit = permutation / weight;
        permutation %= weight;
        if (digit >= left.size())
            throw std::runtime_error("Mach-O: an unwind record names registers that do not exist");
        order.push_back(left[digit]);
        left.erase(left.begin() + digit);
        if (i + 1 < count)
            weight /= 5 - i;
    }
    return order;
}

void describe_frame(writer& out, unsigned char const* function, std::uint32_t encoding)
{
    std::uint32_t const offset = encoding >> 16 & 0xFF;
    if ((encoding & mode_mask) == mode_frame_pointer) {
        out.define_frame(dwarf_rbp, 16);
        out.saved(dwarf_rbp, 2);
        for (std::uint32_t i = 0; i < 5; ++i)
            if (std::uint32_t const number = encoding >> 3 * i & 7; number != 0)
                out.saved(dwarf_register.at(number), 2 + offset - i);
        return;
    }
    std::uint64_t frame_size = offset * 8;
    if ((encoding & mode_mask) == mode_no_frame_large) // the size stands in the prologue's subtraction
        frame_size = read<std::uint32_t>(function + offset) + 8ull * (encoding >> 13 & 7);
    out.define_frame(dwarf_rsp, frame_size);
    std::uint32_t const count = encoding >> 10 & 7;
    auto const registers = permuted_registers(count, encoding & 0x3FF);
    for (std::uint32_t i = 0; i < count; ++i)
        out.saved(dwarf_register.at(registers[i]), 1 + count - i);
}

} // namespace

unwind_tables::~unwind_tables()
{
    for (void* const record : registered_)
        __deregister_frame(record);
}

void unwind_tables::hand_over(void* record)
{
    // LLVM's unwinder, the one behind libc++, takes one function's record a call.
    __register_frame(record);
    registered_.push_back(record);
}

void unwind_tables::add_function(unsigned char* function, unsigned char* end, std::uint32_t encoding, void* personality,
                                 unsigned char* language_data)
{
    writer out;
    out.word(0); // length
    out.word(0); // common record
    out.byte(1); // version
    for (char const c : {'z', 'P', 'L', 'R', '\0'})
        out.byte(static_cast<unsigned char>(c));
    out.uleb(1);    // code unit
    out.byte(0x78); // data unit: -8
    out.byte(dwarf_return_address);
    out.uleb(11); // of augmentation: every pointer is absolute
    out.byte(0);
    out.pointer(personality);
    out.byte(0);
    out.byte(0);
    out.saved(dwarf_return_address, 1);
    out.finish(0);

    std::size_t const start = out.size();
    out.word(0); // length
    out.word(static_cast<std::uint32_t>(start + 4));
    out.pointer(function);
    out.pointer(reinterpret_cast<void*>(end - function));
    out.uleb(8);
    out.pointer(language_data);
    describe_frame(out, function, encoding);
    out.finish(start);

    made_.push_back(std::make_unique<unsigned char[]>(out.size()));
    std::memcpy(made_.back().get(), out.data(), out.size());
    hand_over(made_.back().get() + start);
}

void unwind_tables::add(unsigned char const* unwind_info, unsigned char* image)
{
    if (word(unwind_info, 0) != 1)
        throw std::runtime_error("Mach-O: unknown version of unwind records");
    unsigned char const* const common = unwind_info + word(unwind_info, 1);
    std::uint32_t const common_count = word(unwind_info, 2);
    unsigned char const* const personalities = unwind_info + word(unwind_info, 3);
    unsigned char const* const index = unwind_info + word(unwind_info, 5);
    std::uint32_t const index_count = word(unwind_info, 6);
    if (index_count < 2)
        return;

    // Index entries are triples (function, page, first language data); the last one only ends the lists before it.
    std::map<std::uint32_t, std::uint32_t> language_data;
    std::uint32_t const first_lsda = word(index, 2);
    std::uint32_t const end_lsda = word(index, 3 * (index_count - 1) + 2);
    for (std::uint32_t at = first_lsda; at < end_lsda; at += 8)
        language_data[word(unwind_info + at, 0)] = word(unwind_info + at, 1);

    std::vector<std::pair<std::uint32_t, std::uint32_t>> functions; // (offset, encoding)
    for (std::uint32_t i = 0; i + 1 < index_count; ++i) {
        std::uint32_t const page_offset = word(index, 3 * i + 1);
        if (page_offset == 0)
            continue;
        unsigned char const* const page = unwind_info + page_offset;
        auto const entries = page + read<std::uint16_t>(page + 4);
        std::uint32_t const count = read<std::uint16_t>(page + 6);
        bool const packed = word(page, 0) == 3;
        for (std::uint32_t e = 0; e < count; ++e) {
            if (!packed) {
                functions.emplace_back(word(entries, 2 * e), word(entries, 2 * e + 1));
                continue;
            }
            std::uint32_t const entry = word(entries, e);
            std::uint32_t const kind = entry >> 24;
            unsigned char const* const of_page = page + read<std::uint16_t>(page + 8);
            std::uint32_t const encoding =
                kind < common_count ? word(common, kind) : word(of_page, kind - common_count);
            functions.emplace_back(word(index, 3 * i) + (entry & 0xFFFFFF), encoding);
        }
    }
    functions.emplace_back(word(index, 3 * (index_count - 1)), 0);

    for (std::size_t i = 0; i + 1 < functions.size(); ++i) {
        auto const [offset, encoding] = functions[i];
        if ((encoding & mode_mask) == 0)
            continue; // no record: nothing may unwind through here
        if ((encoding & mode_mask) >= mode_dwarf)
            throw std::runtime_error("Mach-O: an unwind record that is not compact");
        void* personality = nullptr;
        if (std::uint32_t const number = encoding >> 28 & 3; number != 0)
            personality = read<void*>(image + word(personalities, number - 1));
        unsigned char* data = nullptr;
        if (encoding & has_language_data)
            data = image + language_data.at(offset);
        add_function(image + offset, image + functions[i + 1].first, encoding, personality, data);
    }
}

} // namespace quillo::macho
