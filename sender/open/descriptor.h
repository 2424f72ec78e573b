// A file descriptor that closes itself. Move only.
#pragma once

#include <unistd.h>

#include <utility>

namespace quillo::open {

class descriptor
{
  public:
    descriptor() = default;
    explicit descriptor(int owned) : fd(owned) {}
    descriptor(descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    descriptor& operator=(descriptor&& other) noexcept
    {
        std::swap(fd, other.fd);
        return *this;
    }
    ~descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }

    explicit operator bool() const { return fd >= 0; }
    int get() const { return fd; }
    void reset() { descriptor{std::exchange(fd, -1)}; }

  private:
    int fd = -1;
};

} // namespace quillo::open
