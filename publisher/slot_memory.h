// A sender's slots, mapped for reading.
#pragma once

#include "sender/open/descriptor.h"
#include "sender/open/protocol.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace quillo::publisher {

// Slots that were lent and are free again, until the sender is told.
class returned_slots
{
  public:
    // wake may come from any thread.
    explicit returned_slots(std::function<void()> wake) : wake_(std::move(wake)) {}

    void add(protocol::release_body slot); // from any thread
    std::vector<protocol::release_body> take();

  private:
    std::function<void()> const wake_;
    std::mutex mutex_;
    std::vector<protocol::release_body> slots_;
};

class slot_memory : public std::enable_shared_from_this<slot_memory>
{
  public:
    // Believes the numbers only where the memory bears them out: it must be as large as they say and sealed against
    // shrinking, since a page that goes away while it is read would end the process. Throws std::runtime_error.
    slot_memory(open::descriptor memory, protocol::pool_body const& pool);
    slot_memory(slot_memory const&) = delete;
    slot_memory& operator=(slot_memory const&) = delete;
    ~slot_memory();

    std::uint32_t pool_id() const { return pool_.pool_id; }

    // Start of a slot that holds at least bytes; null when there is no such slot.
    unsigned char const* slot(std::uint32_t number, std::uint64_t bytes) const;

    // Keeps the memory, and the slot from being given back: that happens when the last copy of what this returns is
    // gone. Null when the sender would be left with less than min_free_slots.
    std::shared_ptr<void const> lend(std::uint32_t number, std::shared_ptr<returned_slots> to);

  private:
    protocol::pool_body const pool_;
    std::size_t const size_;
    unsigned char const* start_ = nullptr;
    std::atomic<std::uint32_t> lent_{0};
};

} // namespace quillo::publisher
