#include "tests/support/arena.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace quillo::conversions {
namespace {

std::size_t page()
{
    static std::size_t const size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

} // namespace

arena::arena(std::size_t bytes) : size_((bytes + page() - 1) / page() * page())
{
    void* const all = mmap(nullptr, size_ + 2 * page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED)
        throw std::bad_alloc{};
    begin_ = static_cast<unsigned char*>(all) + page();
    if (mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) {
        munmap(all, size_ + 2 * page());
        throw std::bad_alloc{};
    }
}

arena::~arena() { munmap(begin_ - page(), size_ + 2 * page()); }

} // namespace quillo::conversions
