// The memory that the benchmarks convert: rings that are larger than every cache, strips that fit in one.
#pragma once

#include "bench/row.h"

#include <memory>

namespace bench {

// Keeps both cores' caches out of the picture: 200 MB a side.
class ring
{
  public:
    // At least `count` frames of these planes, sources filled with noise. bytes = 0: exactly `count`.
    ring(row const& shapes, int width, int height, bool bottom_up, std::size_t bytes, int count = 1);

    // The next source with the next destination.
    frame next();
    // The next source with the destination number n.
    frame next_into(std::size_t n);

    std::size_t in_bytes() const { return in_bytes_; }
    std::size_t out_bytes() const { return out_bytes_; }

  private:
    frame at(std::size_t source, std::size_t target) const;

    struct unmap
    {
        std::size_t bytes;
        void operator()(unsigned char* memory) const;
    };
    using memory = std::unique_ptr<unsigned char[], unmap>;
    static memory map(std::size_t bytes);

    row const& shapes_;
    int width_, height_;
    bool bottom_up_;
    std::size_t in_bytes_ = 0, out_bytes_ = 0, in_step_ = 0, out_step_ = 0, sources_ = 0, targets_ = 0, position_ = 0;
    memory in_, out_;
};

} // namespace bench
