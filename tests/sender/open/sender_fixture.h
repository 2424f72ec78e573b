// A folder of its own for each test, the environment that a sender reads, and frames to send.
#pragma once

#include "sender/Quillolib_send.h"
#include "sender/open/records.h"
#include "tests/sender/open/fake_publisher.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quillo::test {

using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

// $QUILLO_RUNTIME_DIR, fresh and private; gone at the end.
class private_folder
{
  public:
    private_folder();
    ~private_folder();
    private_folder(private_folder const&) = delete;
    private_folder& operator=(private_folder const&) = delete;
    std::string const& path() const { return name; }

  private:
    std::string name;
};

struct destroy_sender
{
    void operator()(void* handle) const { Quillolib_send_destroy(handle); }
};
using sender_ptr = std::unique_ptr<void, destroy_sender>;

sender_ptr make_sender(bool clock_video = false, bool clock_audio = false, char const* name = "Adobe Premiere Pro");

// A frame with its memory: a different value in every byte's place, made from seed.
struct test_frame
{
    SenderVideoFrame record;
    std::vector<unsigned char> memory;
    std::vector<std::byte> tight; // what the publisher must get

    test_frame(int width, int height, std::uint32_t fourcc, int padding = 0, unsigned seed = 1,
               bool upside_down = false);
};

std::chrono::duration<double, std::milli> milliseconds_of(auto const& call)
{
    auto const start = steady::now();
    call();
    return steady::now() - start;
}

class sender_test : public testing::Test
{
  protected:
    private_folder folder;
};

} // namespace quillo::test
