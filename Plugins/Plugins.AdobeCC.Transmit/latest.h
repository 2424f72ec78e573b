// Hands the latest value from one thread to another; neither ever waits for the other.
#pragma once

#include <atomic>

namespace quillo {

// Three slots: one that the giver fills, one that the taker reads, and one in between that holds what was given last.
// Either side gets the middle one by swapping its own for it, so no slot is ever seen by both.
// One thread at a time gives; one thread at a time takes.
template <class T>
class latest
{
  public:
    void give(T const& value)
    {
        slots[filling] = value;
        filling = middle.exchange(filling | is_new, std::memory_order_acq_rel) & slot_mask;
    }

    // What was given last, whole; T{} before the first. Valid until the next take.
    T const& take()
    {
        if (middle.load(std::memory_order_relaxed) & is_new)
            reading = middle.exchange(reading, std::memory_order_acq_rel) & slot_mask;
        return slots[reading];
    }

  private:
    static constexpr unsigned slot_mask = 3;
    static constexpr unsigned is_new = 4;

    T slots[3]{};
    unsigned filling = 0; // giver's
    std::atomic<unsigned> middle{1};
    unsigned reading = 2; // taker's
};

} // namespace quillo
