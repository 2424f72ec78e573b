#include "tests/support/protocol_sender.h"

#include "tests/support/send_descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <stdexcept>

namespace quillo::testing {

namespace {

constexpr std::uint32_t slots = 12;

std::int64_t now_ns()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000ll + now.tv_nsec;
}

bool readable(int fd, std::chrono::milliseconds limit)
{
    pollfd waiting{fd, POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(limit.count())) > 0;
}

} // namespace

protocol::video_format_body video_format(int width, int height, std::uint32_t fourcc, int rate_n, int rate_d)
{
    return {width,
            height,
            fourcc,
            rate_n,
            rate_d,
            static_cast<float>(width) / static_cast<float>(height),
            FrameFormat_progressive,
            0};
}

open::descriptor picture_memory(std::size_t bytes, bool sealed)
{
    open::descriptor memory{::memfd_create("pictures", MFD_CLOEXEC | MFD_ALLOW_SEALING)};
    if (!memory || ::ftruncate(memory.get(), static_cast<off_t>(bytes)) != 0)
        throw std::runtime_error{"no memory"};
    if (sealed && ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) != 0)
        throw std::runtime_error{"no seals"};
    return memory;
}

protocol_sender::protocol_sender(std::string const& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (::connect(socket_.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
        throw std::runtime_error{"nobody listens at " + path};
}

bool protocol_sender::send_bytes(std::span<std::byte const> bytes, int descriptor)
{
    while (!bytes.empty()) {
        auto const count = send_with_descriptor(socket_.get(), bytes.data(), bytes.size(), descriptor, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        descriptor = -1;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool protocol_sender::send(protocol::message type, std::span<std::byte const> body, int descriptor)
{
    protocol::header const head{protocol::magic, type, static_cast<std::uint32_t>(body.size()), 0};
    std::vector<std::byte> bytes(sizeof head + body.size());
    std::memcpy(bytes.data(), &head, sizeof head);
    std::copy(body.begin(), body.end(), bytes.begin() + sizeof head);
    return send_bytes(bytes, descriptor);
}

void protocol_sender::hello(std::string const& name, std::uint8_t id)
{
    protocol::hello_body body{};
    body.version = protocol::version;
    body.pid = static_cast<std::uint32_t>(::getpid());
    body.sender_id[0] = id;
    body.name_size = static_cast<std::uint32_t>(name.size());
    std::vector<std::byte> bytes(sizeof body + name.size());
    std::memcpy(bytes.data(), &body, sizeof body);
    std::memcpy(bytes.data() + sizeof body, name.data(), name.size());
    send(protocol::message::hello, bytes);
}

void protocol_sender::announce(protocol::video_format_body const& format)
{
    send_record(protocol::message::video_format, format);
}

void protocol_sender::announce(protocol::audio_format_body const& format)
{
    send_record(protocol::message::audio_format, format);
}

void protocol_sender::make_pool(std::size_t picture_bytes)
{
    pool = {pool.pool_id + 1, slots, (picture_bytes + 4095) / 4096 * 4096};
    memory_ = picture_memory(pool.slots * pool.slot_bytes);
    void* const mapped =
        ::mmap(nullptr, pool.slots * pool.slot_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory_.get(), 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error{"no memory"};
    mapped_ = static_cast<std::byte*>(mapped);
    taken_ = 0;
    send_record(protocol::message::pool, pool, memory_.get());
}

bool protocol_sender::has_free_slot() const { return taken_ != (1u << pool.slots) - 1; }

std::uint32_t protocol_sender::take_slot()
{
    if (has_free_slot())
        while (taken_ & 1u << next_slot_ % pool.slots)
            ++next_slot_;
    std::uint32_t const slot = next_slot_++ % pool.slots;
    taken_ |= 1u << slot;
    return slot;
}

void protocol_sender::heed_release(message const& got)
{
    if (got.type != protocol::message::release || got.body.size() != sizeof(protocol::release_body))
        return;
    protocol::release_body body{};
    std::memcpy(&body, got.body.data(), sizeof body);
    if (body.pool_id == pool.pool_id && body.slot < pool.slots)
        taken_ &= ~(1u << body.slot);
}

void protocol_sender::video(protocol::video_format_body const& format, std::span<unsigned char const> picture,
                            std::int64_t timecode_100ns, bool repeat)
{
    if (pool.slot_bytes < picture.size())
        make_pool(picture.size());
    std::uint32_t const slot = take_slot();
    std::memcpy(mapped_ + slot * pool.slot_bytes, picture.data(), picture.size());
    send_record(protocol::message::video,
                protocol::video_body{format, pool.pool_id, slot, timecode_100ns, now_ns(), index_++, repeat, 0});
}

void protocol_sender::audio(protocol::audio_format_body const& format, std::span<float const> planar,
                            std::int64_t timecode_100ns)
{
    int const samples = static_cast<int>(planar.size()) / format.channels;
    protocol::audio_body const body{format, samples, 0, timecode_100ns, now_ns(), samples_};
    samples_ += static_cast<std::uint64_t>(samples);
    std::vector<std::byte> bytes(sizeof body + planar.size_bytes());
    std::memcpy(bytes.data(), &body, sizeof body);
    std::memcpy(bytes.data() + sizeof body, planar.data(), planar.size_bytes());
    send(protocol::message::audio, bytes);
}

void protocol_sender::silence(protocol::audio_format_body const& format, int samples)
{
    send_record(protocol::message::audio, protocol::audio_body{format, samples, 1, 0, now_ns(), samples_});
    samples_ += static_cast<std::uint64_t>(samples);
}

std::optional<protocol_sender::message> protocol_sender::receive(milliseconds limit)
{
    auto const until = std::chrono::steady_clock::now() + limit;
    for (;;) {
        protocol::header head{};
        if (arrived_.size() >= sizeof head) {
            std::memcpy(&head, arrived_.data(), sizeof head);
            if (arrived_.size() >= sizeof head + head.size) {
                auto const end = arrived_.begin() + static_cast<std::ptrdiff_t>(sizeof head + head.size);
                message result{head.type, {arrived_.begin() + sizeof head, end}};
                arrived_.erase(arrived_.begin(), end);
                heed_release(result);
                return result;
            }
        }
        auto const left = std::chrono::ceil<milliseconds>(until - std::chrono::steady_clock::now());
        if (left < 0ms || !readable(socket_.get(), left))
            return std::nullopt;
        std::byte chunk[65536];
        ssize_t const count = ::recv(socket_.get(), chunk, sizeof chunk, 0);
        if (count <= 0) {
            ended_ = true;
            return std::nullopt;
        }
        arrived_.insert(arrived_.end(), chunk, chunk + count);
    }
}

std::optional<protocol_sender::message> protocol_sender::receive(protocol::message type, milliseconds limit)
{
    while (auto got = receive(limit))
        if (got->type == type)
            return got;
    return std::nullopt;
}

bool protocol_sender::wait_for_wants(bool video, milliseconds limit)
{
    while (auto const got = receive(protocol::message::wants, limit)) {
        protocol::wants_body body{};
        std::memcpy(&body, got->body.data(), sizeof body);
        if ((body.video != 0) == video)
            return true;
    }
    return false;
}

bool protocol_sender::wait_for_release(milliseconds limit)
{
    return receive(protocol::message::release, limit).has_value();
}

std::string protocol_sender::status()
{
    send(protocol::message::status_request, std::span<std::byte const>{});
    auto const got = receive(protocol::message::status);
    return got ? std::string{reinterpret_cast<char const*>(got->body.data()), got->body.size()} : std::string{};
}

} // namespace quillo::testing
