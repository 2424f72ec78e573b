#include "tests/support/macho/image.h"

#include "tests/support/macho/unwind.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

extern "C" void __cxa_finalize(void*);

namespace quillo::macho {

namespace {

#ifdef __x86_64__
constexpr std::uint32_t this_cpu = cpu_x86_64;
#else
constexpr std::uint32_t this_cpu = cpu_arm64;
#endif

[[noreturn]] void fail(std::string const& what) { throw std::runtime_error("Mach-O: " + what); }

std::uint32_t big_endian(bytes data, std::uint64_t offset)
{
    return __builtin_bswap32(record_at<std::uint32_t>(data, offset));
}

// The file itself, or the slice of a universal file that suits this processor.
bytes slice_of(bytes file)
{
    if (big_endian(file, 0) != magic_universal)
        return file;
    std::uint32_t const slices = big_endian(file, 4);
    for (std::uint32_t i = 0; i < slices; ++i) {
        std::uint64_t const entry = 8 + 20ull * i;
        if (big_endian(file, entry) == this_cpu)
            return part(file, big_endian(file, entry + 8), big_endian(file, entry + 12));
    }
    fail("no slice for this processor");
}

template <std::size_t N>
std::string_view fixed_text(char const (&text)[N])
{
    return {text, strnlen(text, N)};
}

std::mutex loaded_mutex;
std::vector<image const*> loaded;

} // namespace

image const* image::around(void const* address)
{
    std::scoped_lock const lock(loaded_mutex);
    for (image const* const each : loaded)
        if (address >= each->base_ && address < each->base_ + each->mapped_size_)
            return each;
    return nullptr;
}

image::image(std::string const& path, resolver const& resolve) : path_(path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        fail("cannot read " + path);
    file_.assign(std::istreambuf_iterator<char>(in), {});
    slice_ = slice_of(file_);

    read_commands();
    map_segments();
    try {
        rebase(part(slice_, info_.rebase_offset, info_.rebase_size));
        bind(part(slice_, info_.bind_offset, info_.bind_size), false, false, resolve);
        bind(part(slice_, info_.lazy_offset, info_.lazy_size), true, false, resolve);
        bind(part(slice_, info_.weak_offset, info_.weak_size), false, true, resolve);
        protect();
#ifdef __x86_64__ // elsewhere the records look otherwise, and nothing may throw
        unwind_ = std::make_unique<unwind_tables>();
        if (section const* const records = find_section("__unwind_info"))
            unwind_->add(at(records->address), base_);
#endif
        run_initialisers();
        std::scoped_lock const lock(loaded_mutex);
        loaded.push_back(this);
    } catch (...) {
        unwind_ = nullptr;
        munmap(base_, mapped_size_);
        throw;
    }
}

image::~image()
{
    // The linker places the handle that exit handlers are registered with at the image's header.
    __cxa_finalize(base_);
    {
        std::scoped_lock const lock(loaded_mutex);
        std::erase(loaded, this);
    }
    unwind_ = nullptr;
    munmap(base_, mapped_size_);
}

void image::read_commands()
{
    auto const head = record_at<header>(slice_, 0);
    if (head.magic != magic_64 || head.cpu != this_cpu)
        fail("not for this processor");
    if (head.file_type != type_bundle && head.file_type != type_dylib)
        fail("neither a bundle nor a library");

    std::uint64_t offset = sizeof head;
    for (std::uint32_t i = 0; i < head.commands; ++i) {
        auto const each = record_at<command>(slice_, offset);
        if (each.kind == command_segment) {
            mapped_segment next{record_at<segment>(slice_, offset), {}};
            for (std::uint32_t s = 0; s < next.head.sections; ++s)
                next.sections.push_back(record_at<section>(slice_, offset + sizeof(segment) + s * sizeof(section)));
            segments_.push_back(next);
        } else if (each.kind == command_load_dylib || each.kind == command_load_weak_dylib) {
            auto const name = record_at<dylib>(slice_, offset).name_offset;
            libraries_.emplace_back(cursor(part(slice_, offset, each.size), name).text());
        } else if (each.kind == command_dyld_info_only) {
            info_ = record_at<dyld_info>(slice_, offset);
        } else if (each.kind == command_chained_fixups) {
            fail("chained fixups: link for a system before 11.0, or with -no_fixup_chains");
        } else if (each.kind == command_symtab) {
            auto const table = record_at<symtab>(slice_, offset);
            bytes const strings = part(slice_, table.strings_offset, table.strings_size);
            for (std::uint32_t s = 0; s < table.symbols; ++s) {
                auto const one = record_at<symbol>(slice_, table.symbols_offset + s * sizeof(symbol));
                if ((one.type & symbol_debug) == 0 && (one.type & symbol_kind_mask) == symbol_in_section)
                    symbols_.emplace(cursor(strings, one.name).text(), one.value);
            }
        }
        offset += each.size;
    }
    for (auto const& each : segments_)
        for (auto const& one : each.sections) {
            auto const type = one.flags & section_type_mask;
            if (type >= section_thread_local_first && type <= section_thread_local_last)
                fail("thread_local variables are not supported");
            if (type == section_initialiser_offsets)
                fail("initialisers by offset are not supported");
        }
}

void image::map_segments()
{
    if (segments_.empty())
        fail("no segments");
    std::uint64_t highest = 0;
    lowest_ = segments_.front().head.address;
    for (auto const& each : segments_) {
        lowest_ = std::min(lowest_, each.head.address);
        highest = std::max(highest, each.head.address + each.head.size);
    }
    mapped_size_ = highest - lowest_;
    void* const memory = mmap(nullptr, mapped_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        fail("no memory");
    base_ = static_cast<unsigned char*>(memory);
    for (auto const& each : segments_) {
        if (each.head.file_size > each.head.size)
            fail("a segment is larger in the file than in memory");
        bytes const contents = part(slice_, each.head.file_offset, each.head.file_size);
        std::copy(contents.begin(), contents.end(), at(each.head.address));
    }
}

void image::protect()
{
    for (auto const& each : segments_) {
        auto protection = static_cast<int>(each.head.protection); // read 1, write 2, execute 4, as here
        if (each.head.flags & segment_read_only_after_fixups)
            protection &= ~PROT_WRITE;
        if (each.head.size != 0 && mprotect(at(each.head.address), each.head.size, protection) != 0)
            fail("cannot protect " + std::string(fixed_text(each.head.name)));
    }
}

void image::run_initialisers()
{
    using initialiser = void (*)(int, char const**, char const**, char const**);
    static char const* nothing[] = {nullptr};
    for (auto const& each : segments_)
        for (auto const& one : each.sections)
            if ((one.flags & section_type_mask) == section_initialisers)
                for (std::uint64_t i = 0; i < one.size; i += sizeof(initialiser)) {
                    initialiser run;
                    std::memcpy(&run, at(one.address + i), sizeof run);
                    run(0, nothing, nothing, nothing);
                }
}

void* image::exported(std::string_view symbol) const
{
    // The trie: each node may end a name here, and leads on by pieces of names.
    bytes const trie = part(slice_, info_.exports_offset, info_.exports_size);
    std::uint64_t node = 0;
    while (!trie.empty()) {
        cursor here(trie, node);
        std::uint64_t const terminal_size = here.uleb();
        if (symbol.empty()) {
            if (terminal_size == 0 || here.uleb() != 0) // flags: re-exports and the like are not ours
                return nullptr;
            return base_ + here.uleb();
        }
        for (std::uint64_t i = 0; i < terminal_size; ++i)
            here.byte();
        bool followed = false;
        for (int children = here.byte(); children > 0 && !followed; --children) {
            std::string_view const piece = here.text();
            std::uint64_t const next = here.uleb();
            if (symbol.starts_with(piece)) {
                symbol.remove_prefix(piece.size());
                node = next;
                followed = true;
            }
        }
        if (!followed)
            break;
    }
    return nullptr;
}

void* image::local(std::string_view symbol) const
{
    auto const found = symbols_.find(symbol);
    return found == symbols_.end() ? nullptr : at(found->second);
}

section const* image::find_section(std::string_view name) const
{
    for (auto const& each : segments_)
        for (auto const& one : each.sections)
            if (fixed_text(one.name) == name)
                return &one;
    return nullptr;
}

unsigned char* image::in_segment(std::size_t index, std::uint64_t offset) const
{
    if (index >= segments_.size() || offset > segments_[index].head.size - sizeof(void*))
        fail("a fixup lies outside its segment");
    return at(segments_[index].head.address) + offset;
}

} // namespace quillo::macho
