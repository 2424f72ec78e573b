// Loads a macOS bundle or library into this Linux process and runs it natively: the processor and the calling
// convention are the same, only the file format and the names of the system's functions differ. For tests.
#pragma once

#include "tests/support/macho/format.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillo::macho {

class unwind_tables;

// Finds what an image imports, by the install name of the library and the symbol with its leading underscore. There is
// no default: null fails the load.
using resolver = std::function<void*(std::string_view library, std::string_view symbol)>;

class image
{
  public:
    // Maps the slice of this processor, binds every import at once and runs the initialisers. Throws std::runtime_error
    // with the name of whatever it cannot find or does not understand.
    image(std::string const& path, resolver const& resolve);

    // Runs the image's exit handlers and unmaps it; no thread may be inside.
    ~image();

    image(image const&) = delete;
    image& operator=(image const&) = delete;

    // The address of an exported symbol, as dlsym would find it; null if there is none.
    void* exported(std::string_view symbol) const;

    // The address of any symbol that the symbol table still names; null if there is none.
    void* local(std::string_view symbol) const;

    std::vector<std::string> const& libraries() const { return libraries_; }

    std::string const& path() const { return path_; }

    // The loaded image that an address lies in; null if none.
    static image const* around(void const* address);

  private:
    struct mapped_segment
    {
        segment head;
        std::vector<section> sections;
    };

    void read_commands();
    void map_segments();
    void rebase(bytes opcodes);
    void bind(bytes opcodes, bool lazy, bool weak, resolver const& resolve);
    void bind_one(int ordinal, bool optional, bool weak, std::string_view symbol, unsigned char* slot,
                  std::int64_t addend, resolver const& resolve);
    void protect();
    void run_initialisers();
    section const* find_section(std::string_view name) const;
    unsigned char* in_segment(std::size_t index, std::uint64_t offset) const;
    unsigned char* at(std::uint64_t address) const { return base_ + (address - lowest_); }

    std::string path_;
    std::vector<unsigned char> file_;
    bytes slice_;
    std::vector<mapped_segment> segments_;
    std::vector<std::string> libraries_;
    std::map<std::string, std::uint64_t, std::less<>> symbols_;
    dyld_info info_{};
    std::uint64_t lowest_ = 0;
    std::size_t mapped_size_ = 0;
    unsigned char* base_ = nullptr;
    std::unique_ptr<unwind_tables> unwind_;
};

} // namespace quillo::macho
