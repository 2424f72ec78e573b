// How far a long job is, on a terminal; nothing where standard error is no terminal.
#pragma once

#include <cstdint>

namespace quillo {

class progress_bar
{
  public:
    explicit progress_bar(std::int64_t total);

    // Draws the bar, at most some ten times a second.
    void show(std::int64_t done);

    // Leaves a clean line.
    void finish();

  private:
    std::int64_t total_;
    std::int64_t next_ns_;
    bool on_terminal_;
    bool drawn_ = false;
};

} // namespace quillo
