// The slots in shared memory through which pictures go to the publisher.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quillo::open {

class slot_pool
{
  public:
    // As many as a publisher with slow receivers shows pictures from, a few, and those that it leaves.
    static constexpr std::uint32_t slots = 4 + protocol::min_free_slots;

    // Makes room for pictures of up to picture_bytes and touches all of it, so that no copy meets a page fault.
    // Throws std::system_error when there is no memory.
    explicit slot_pool(std::size_t picture_bytes);
    slot_pool(slot_pool const&) = delete;
    slot_pool& operator=(slot_pool const&) = delete;
    ~slot_pool();

    int fd() const { return memory.get(); }
    std::size_t slot_bytes() const { return one; }

    // A free slot's number, from then on taken.
    std::optional<std::uint32_t> take();
    // Any number may come; only a taken slot becomes free by it.
    void give_back(std::uint32_t slot);
    void give_back_all() { taken = 0; }

    std::byte* slot(std::uint32_t number) const { return start + number * one; }

  private:
    std::size_t const one; // bytes, a multiple of the page size
    descriptor memory;
    std::byte* start = nullptr;
    std::uint32_t taken = 0; // a bit for each slot
};

} // namespace quillo::open
