// A sender's slots, mapped for reading.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace quillo::publisher {

class slot_memory
{
  public:
    // Maps nothing yet.
    slot_memory() = default;

    // Believes the numbers only where the memory bears them out: it must be as large as they say and sealed against
    // shrinking, since a page that goes away while it is read would end the process. Throws std::runtime_error.
    slot_memory(open::descriptor memory, protocol::pool_body const& pool);
    slot_memory(slot_memory&& other) noexcept;
    slot_memory& operator=(slot_memory&& other) noexcept;
    ~slot_memory();

    std::uint32_t pool_id() const { return pool_.pool_id; }

    // Start of a slot that holds at least bytes; null when there is no such slot.
    unsigned char const* slot(std::uint32_t number, std::uint64_t bytes) const;

  private:
    protocol::pool_body pool_{};
    unsigned char const* start_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace quillo::publisher
