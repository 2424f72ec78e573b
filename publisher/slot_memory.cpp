#include "publisher/slot_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <stdexcept>
#include <utility>

namespace quillo::publisher {

namespace {

constexpr std::uint64_t page = 4096;

std::size_t checked_size(int fd, protocol::pool_body const& pool)
{
    if (pool.slots < 1 || pool.slots > protocol::max_slots)
        throw std::runtime_error{"number of slots out of range"};
    if (pool.slot_bytes < page || pool.slot_bytes > protocol::max_slot_bytes || pool.slot_bytes % page != 0)
        throw std::runtime_error{"size of slots out of range"};
    std::uint64_t const size = pool.slots * pool.slot_bytes;

    struct stat memory
    {
    };
    if (fd < 0 || ::fstat(fd, &memory) != 0 || !S_ISREG(memory.st_mode))
        throw std::runtime_error{"no memory came along"};
    if (memory.st_size < 0 || static_cast<std::uint64_t>(memory.st_size) < size)
        throw std::runtime_error{"memory smaller than its slots"};
#ifdef F_GET_SEALS
    int const seals = ::fcntl(fd, F_GET_SEALS);
    if (seals < 0 || !(seals & F_SEAL_SHRINK))
        throw std::runtime_error{"memory not sealed against shrinking"};
#endif
    return size;
}

} // namespace

void returned_slots::add(protocol::release_body slot)
{
    {
        std::lock_guard const lock{mutex_};
        slots_.push_back(slot);
    }
    wake_();
}

std::vector<protocol::release_body> returned_slots::take()
{
    std::lock_guard const lock{mutex_};
    return std::exchange(slots_, {});
}

slot_memory::slot_memory(open::descriptor memory, protocol::pool_body const& pool)
    : pool_(pool), size_(checked_size(memory.get(), pool))
{
    // All pages at once, or the first pictures would wait for them.
    void* const mapped = ::mmap(nullptr, size_, PROT_READ, MAP_SHARED | MAP_POPULATE, memory.get(), 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error{"memory cannot be mapped"};
    start_ = static_cast<unsigned char const*>(mapped);
}

slot_memory::~slot_memory() { ::munmap(const_cast<unsigned char*>(start_), size_); }

unsigned char const* slot_memory::slot(std::uint32_t number, std::uint64_t bytes) const
{
    if (number >= pool_.slots || bytes > pool_.slot_bytes)
        return nullptr;
    return start_ + number * pool_.slot_bytes;
}

std::shared_ptr<void const> slot_memory::lend(std::uint32_t number, std::shared_ptr<returned_slots> to)
{
    // Only the connection's thread lends, so nobody else counts up.
    if (lent_ + protocol::min_free_slots >= pool_.slots)
        return nullptr;
    ++lent_;
    protocol::release_body const lent{pool_.pool_id, number};
    return {start_, [self = shared_from_this(), to = std::move(to), lent](void const*) {
                --self->lent_;
                to->add(lent);
            }};
}

} // namespace quillo::publisher
