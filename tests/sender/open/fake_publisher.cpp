#include "tests/sender/open/fake_publisher.h"

#include "sender/open/runtime_folder.h"
#include "sender/open/system_call.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace quillo::test {

using open::check_call;
using open::descriptor;
using protocol::message;

namespace {

descriptor listen_at(std::string const& path)
{
    ::unlink(path.c_str());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    auto socket = open::make_local_socket();
    check_call(::bind(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address), "bind");
    check_call(::listen(socket.get(), 8), "listen");
    return socket;
}

} // namespace

fake_publisher::fake_publisher(std::string const& folder, behaviour how)
    : listener(listen_at(open::socket_path(folder))), manners(std::move(how)), thread([this] { run(); })
{
}

fake_publisher::~fake_publisher()
{
    {
        std::lock_guard const guard{lock};
        stopping = true;
    }
    commands.wake();
    thread.join();
    close_connection();
}

void fake_publisher::behave(std::function<void(behaviour&)> const& change)
{
    std::lock_guard const guard{lock};
    auto const before = manners;
    change(manners);
    if (before.want_video != manners.want_video || before.want_audio != manners.want_audio)
        say_wants();
    commands.wake();
}

void fake_publisher::send(message type, std::vector<std::byte> const& body)
{
    std::lock_guard const guard{lock};
    say(type, body.data(), body.size());
}

void fake_publisher::send_bytes(std::vector<std::byte> const& bytes)
{
    std::lock_guard const guard{lock};
    if (connection)
        ::send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void fake_publisher::hang_up()
{
    std::lock_guard const guard{lock};
    if (connection)
        ::shutdown(connection.get(), SHUT_RDWR);
}

bool fake_publisher::wait_until(std::function<bool(record const&)> const& condition, std::chrono::milliseconds limit)
{
    std::unique_lock guard{lock};
    return changed.wait_for(guard, limit, [&] { return condition(memory); });
}

fake_publisher::record fake_publisher::seen() const
{
    std::lock_guard const guard{lock};
    return memory;
}

void fake_publisher::forget_pictures()
{
    std::lock_guard const guard{lock};
    memory.pictures.clear();
}

void fake_publisher::run()
{
    for (;;) {
        std::array<pollfd, 3> sources{};
        sources[0] = {commands.fd(), POLLIN, 0};
        sources[1] = {listener.get(), POLLIN, 0};
        {
            std::lock_guard const guard{lock};
            if (stopping)
                return;
            sources[2] = {manners.read ? connection.get() : -1, POLLIN, 0};
        }
        ::poll(sources.data(), sources.size(), -1);
        if (sources[0].revents)
            commands.drain();
        std::lock_guard const guard{lock};
        if (sources[1].revents)
            accept_one();
        else if (sources[2].revents)
            read_some();
        changed.notify_all();
    }
}

void fake_publisher::accept_one()
{
    descriptor next{::accept(listener.get(), nullptr, nullptr)};
    if (!next)
        return;
    close_connection();
    connection = std::move(next);
    open::set_private_and_nonblocking(connection.get());
    ++memory.connections;
    memory.connected = true;
}

void fake_publisher::read_some()
{
    std::array<std::byte, 65536> bytes;
    iovec data{bytes.data(), bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr incoming{};
    incoming.msg_iov = &data;
    incoming.msg_iovlen = 1;
    incoming.msg_control = control.data();
    incoming.msg_controllen = control.size();
    auto const count = ::recvmsg(connection.get(), &incoming, MSG_CMSG_CLOEXEC);
    if (count <= 0) {
        close_connection();
        return;
    }
    for (auto* head = CMSG_FIRSTHDR(&incoming); head; head = CMSG_NXTHDR(&incoming, head)) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(head), sizeof fd);
        passed.emplace_back(fd);
    }
    arrived.insert(arrived.end(), bytes.begin(), bytes.begin() + count);
    while (take_message()) {
    }
}

bool fake_publisher::take_message()
{
    protocol::header head;
    if (arrived.size() < sizeof head)
        return false;
    std::memcpy(&head, arrived.data(), sizeof head);
    if (head.magic != protocol::magic || head.size > protocol::max_body) {
        memory.violations.emplace_back("bad header");
        arrived.clear();
        return false;
    }
    if (arrived.size() < sizeof head + head.size)
        return false;
    take_body(head.type, arrived.data() + sizeof head, head.size);
    arrived.erase(arrived.begin(), arrived.begin() + static_cast<std::ptrdiff_t>(sizeof head + head.size));
    return true;
}

void fake_publisher::take_body(message type, std::byte const* body, std::size_t size)
{
    auto const take = [&](auto& into) {
        if (size < sizeof into) {
            memory.violations.emplace_back("short message");
            return;
        }
        std::memcpy(&into, body, sizeof into);
        body += sizeof into;
        size -= sizeof into;
    };
    switch (type) {
    case message::hello: {
        protocol::hello_body hello;
        take(hello);
        memory.hellos.push_back(hello);
        auto const* const text = reinterpret_cast<char const*>(body);
        memory.name.assign(text, hello.name_size);
        memory.groups.assign(text + hello.name_size, hello.groups_size);
        if (!manners.noise.empty())
            ::send(connection.get(), manners.noise.data(), manners.noise.size(), MSG_NOSIGNAL);
        else if (manners.greet) {
            say(message::welcome, protocol::welcome_body{manners.version, 4711});
            say_wants();
        }
        break;
    }
    case message::video_format:
        take(memory.video_formats.emplace_back());
        break;
    case message::audio_format:
        take(memory.audio_formats.emplace_back());
        break;
    case message::losses: {
        protocol::losses_body losses;
        take(losses);
        memory.losses = losses;
        break;
    }
    case message::pool: {
        protocol::pool_body next;
        take(next);
        take_pool(next);
        break;
    }
    case message::video: {
        protocol::video_body head;
        take(head);
        take_picture(head);
        break;
    }
    case message::audio: {
        if (!manners.remember)
            memory.sounds.clear();
        auto& sound = memory.sounds.emplace_back();
        take(sound.head);
        auto const count =
            sound.head.silent ? 0 : static_cast<std::size_t>(sound.head.samples * sound.head.format.channels);
        if (memory.audio_formats.empty() || !(memory.audio_formats.back() == sound.head.format))
            memory.violations.emplace_back("sound of another format than announced");
        if (size != count * sizeof(float))
            memory.violations.emplace_back("samples missing");
        sound.samples.resize(size / sizeof(float));
        if (!sound.samples.empty())
            std::memcpy(sound.samples.data(), body, sound.samples.size() * sizeof(float));
        break;
    }
    default:
        memory.violations.emplace_back("unknown message");
    }
}

void fake_publisher::take_pool(protocol::pool_body const& next)
{
    if (passed.empty() || next.slots == 0 || next.slots > protocol::max_slots || next.slot_bytes % 4096 ||
        next.slot_bytes > protocol::max_slot_bytes || next.pool_id <= pool_is.pool_id) {
        memory.violations.emplace_back("bad pool");
        return;
    }
    descriptor const fd = std::move(passed.front());
    passed.erase(passed.begin());
    struct stat is;
    if (::fstat(fd.get(), &is) != 0 || static_cast<std::uint64_t>(is.st_size) < next.slot_bytes * next.slots)
        memory.violations.emplace_back("pool too small");
#ifdef F_GET_SEALS
    int const wanted = F_SEAL_SHRINK | F_SEAL_GROW;
    memory.pools_sealed = memory.pools_sealed && (::fcntl(fd.get(), F_GET_SEALS) & wanted) == wanted;
#endif
    if (pool)
        ::munmap(const_cast<std::byte*>(pool), pool_is.slot_bytes * pool_is.slots);
    pool_is = next;
    void* const mapped = ::mmap(nullptr, next.slot_bytes * next.slots, PROT_READ, MAP_SHARED, fd.get(), 0);
    pool = mapped == MAP_FAILED ? nullptr : static_cast<std::byte const*>(mapped);
    memory.pools.push_back(next);
}

void fake_publisher::take_picture(protocol::video_body const& head)
{
    auto const pixels = static_cast<std::size_t>(head.format.width) * static_cast<std::size_t>(head.format.height);
    bool const four = head.format.fourcc == 0x41524742 || head.format.fourcc == 0x58524742;
    auto const size = pixels * (four ? 4 : head.format.fourcc == 0x41565955 ? 3 : 2);
    if (!pool || head.pool_id != pool_is.pool_id || head.slot >= pool_is.slots || size > pool_is.slot_bytes) {
        memory.violations.emplace_back("picture outside of the pool");
        return;
    }
    if (memory.video_formats.empty() || !(memory.video_formats.back() == head.format))
        memory.violations.emplace_back("picture of another format than announced");
    auto const* const at = pool + head.slot * pool_is.slot_bytes;
    if (!manners.remember && !memory.pictures.empty()) {
        memory.pictures.back().head = head;
        std::memcpy(memory.pictures.back().bytes.data(), at, std::min(size, memory.pictures.back().bytes.size()));
    } else {
        memory.pictures.push_back({head, {at, at + size}});
    }
    if (manners.give_back)
        say(message::release, protocol::release_body{head.pool_id, head.slot});
}

void fake_publisher::close_connection()
{
    connection.reset();
    arrived.clear();
    passed.clear();
    if (pool)
        ::munmap(const_cast<std::byte*>(pool), pool_is.slot_bytes * pool_is.slots);
    pool = nullptr;
    pool_is = {};
    memory.connected = false;
}

void fake_publisher::say(message type, void const* body, std::size_t size)
{
    if (!connection)
        return;
    protocol::header const head{protocol::magic, type, static_cast<std::uint32_t>(size), 0};
    std::vector<std::byte> bytes(sizeof head + size);
    std::memcpy(bytes.data(), &head, sizeof head);
    if (size)
        std::memcpy(bytes.data() + sizeof head, body, size);
    ::send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void fake_publisher::say_wants() { say(message::wants, protocol::wants_body{manners.want_video, manners.want_audio}); }

} // namespace quillo::test
