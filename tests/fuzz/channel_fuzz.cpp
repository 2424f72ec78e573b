// Anything at all on the local socket, with memory of several kinds, into a source that somebody watches.
#include "publisher/channel.h"
#include "publisher/listener.h"
#include "publisher/log.h"
#include "publisher/source.h"
#include "tests/support/send_descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

using namespace quillo;
using namespace quillo::publisher;

constexpr std::size_t memory_size = 4 << 16;

// Looks at every byte that it is given.
class reader : public listener
{
  public:
    void format(picture_format const&, sound_format const&) override {}
    void picture(GstBuffer* fill) override
    {
        GstMapInfo map;
        if (!gst_buffer_map(fill, &map, GST_MAP_READ))
            return;
        for (std::size_t k = 0; k < map.size; k += 61)
            sum_ = sum_ + map.data[k];
        gst_buffer_unmap(fill, &map);
    }
    void sound(placed_sound const& block) override
    {
        if (block.planar)
            sum_ = sum_ + (block.planar[block.samples * block.format.channels - 1] > 0 ? 1 : 0);
    }
    void ended() override {}

  private:
    unsigned volatile sum_ = 0;
};

class one_source : public channel_directory
{
  public:
    ~one_source() override
    {
        if (source_)
            source_->remove(listener_);
    }
    std::shared_ptr<channel_events> open_source(introduction const& who) override
    {
        source_ = std::make_shared<source>(who, "fuzz", [] {});
        source_->add(listener_);
        return source_;
    }
    std::string status() override { return "{}"; }

  private:
    reader listener_;
    std::shared_ptr<source> source_;
};

open::descriptor memory(bool sealed)
{
    open::descriptor made{::memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING)};
    if (!made || ::ftruncate(made.get(), memory_size) != 0 ||
        (sealed && ::fcntl(made.get(), F_ADD_SEALS, F_SEAL_SHRINK) != 0))
        std::abort();
    return made;
}

int kind_of_memory(unsigned kind)
{
    static open::descriptor const sealed = memory(true), loose = memory(false),
                                  device{::open("/dev/zero", O_RDONLY | O_CLOEXEC)};
    int const kinds[] = {-1, sealed.get(), loose.get(), device.get()};
    return kinds[kind % 4];
}

} // namespace

// The first byte says which memory comes along, the second where in the rest.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static bool const ready = [] {
        gst_init(nullptr, nullptr);
        log::set_level(log::level::error);
        return true;
    }();
    if (!ready || size < 2)
        return 0;
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        std::abort();
    open::descriptor const theirs{ends[1]};
    one_source directory;
    channel taking{open::descriptor{ends[0]}, directory, [] {}};
    std::size_t const split = data[1] * (size - 2) / 256;
    constexpr int flags = MSG_DONTWAIT | MSG_NOSIGNAL;
    if (split > 0)
        testing::send_with_descriptor(theirs.get(), data + 2, split, -1, flags);
    if (split < size - 2)
        testing::send_with_descriptor(theirs.get(), data + 2 + split, size - 2 - split, kind_of_memory(data[0]), flags);
    try {
        for (pollfd waiting{taking.fd(), POLLIN, 0}; ::poll(&waiting, 1, 0) > 0 && taking.receive();)
            ;
    } catch (protocol_error const&) {
    }
    return 0;
}
