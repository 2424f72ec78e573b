#include "sender/open/slot_pool.h"

#include "sender/open/system_call.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <atomic>
#include <string>

namespace quillo::open {

namespace {

constexpr std::size_t page = 4096;

#ifdef __linux__

// Sealed, so that the publisher cannot be hurt by a picture that shrinks under its hands.
descriptor make_memory(std::size_t bytes)
{
    descriptor memory{check_call(::memfd_create("quillo-pictures", MFD_CLOEXEC | MFD_ALLOW_SEALING), "memfd_create")};
    // Reserved at once: when memory is short this fails, where a later copy would kill the host.
    if (int const error = ::posix_fallocate(memory.get(), 0, static_cast<off_t>(bytes)))
        throw std::system_error{error, std::generic_category(), "posix_fallocate"};
    check_call(::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL), "seals");
    return memory;
}

constexpr int map_flags = MAP_SHARED | MAP_POPULATE;

#else

descriptor make_memory(std::size_t bytes)
{
    static std::atomic<unsigned> count{0};
    // A name of at most 31 characters, gone again before anybody else can look for it.
    auto const name = "/quillo-" + std::to_string(::getpid()) + "-" + std::to_string(count++);
    descriptor memory{check_call(::shm_open(name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600), "shm_open")};
    ::shm_unlink(name.c_str());
    check_call(::ftruncate(memory.get(), static_cast<off_t>(bytes)), "ftruncate");
    return memory;
}

constexpr int map_flags = MAP_SHARED;

#endif

} // namespace

slot_pool::slot_pool(std::size_t picture_bytes)
    : one((picture_bytes + page - 1) / page * page), memory(make_memory(one * slots))
{
    auto const bytes = one * slots;
    void* const mapped = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, map_flags, memory.get(), 0);
    if (mapped == MAP_FAILED)
        throw std::system_error{errno, std::generic_category(), "mmap"};
    start = static_cast<std::byte*>(mapped);
    if constexpr ((map_flags & ~MAP_SHARED) == 0)
        for (std::size_t at = 0; at < bytes; at += page)
            start[at] = std::byte{0};
}

slot_pool::~slot_pool() { ::munmap(start, one * slots); }

std::optional<std::uint32_t> slot_pool::take()
{
    for (std::uint32_t number = 0; number < slots; ++number)
        if (!(taken & 1u << number)) {
            taken |= 1u << number;
            return number;
        }
    return {};
}

void slot_pool::give_back(std::uint32_t slot)
{
    if (slot < slots)
        taken &= ~(1u << slot);
}

} // namespace quillo::open
