// Memory that ends at a page nobody may touch; or that nobody may touch at all.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <span>
#include <stdexcept>

namespace quillo::test {

class guarded_memory
{
  public:
    // Holds a copy of the content, the guard right behind it.
    explicit guarded_memory(std::span<unsigned char const> content) : guarded_memory(content.size())
    {
        std::memcpy(begin, content.data(), content.size());
    }
    explicit guarded_memory(std::size_t size)
    {
        auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        auto const inside = (size + page - 1) / page * page;
        total = inside + page;
        void* const mapped = ::mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            throw std::runtime_error{"mmap"};
        base = static_cast<unsigned char*>(mapped);
        ::mprotect(base + inside, page, PROT_NONE);
        begin = base + inside - size;
    }
    guarded_memory(guarded_memory const&) = delete;
    guarded_memory& operator=(guarded_memory const&) = delete;
    ~guarded_memory() { ::munmap(base, total); }

    unsigned char const* start() const { return begin; }
    // From here on every access is the end of the process.
    void forbid() { ::mprotect(base, total, PROT_NONE); }

  private:
    unsigned char* base;
    unsigned char* begin;
    std::size_t total;
};

} // namespace quillo::test
