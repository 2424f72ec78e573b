#include "publisher/channel_server.h"

#include "publisher/log.h"
#include "sender/open/runtime_folder.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quillo::publisher {

namespace {

using clock = std::chrono::steady_clock;

std::string with_errno(std::string const& what) { return what + ": " + std::strerror(errno); }

open::descriptor lock_folder(std::string const& folder)
{
    std::string problem;
    if (!open::make_private_folder(folder, problem))
        throw std::runtime_error{problem};
    std::string const path = folder + "/publisher.lock";
    open::descriptor lock{::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)};
    if (!lock)
        throw std::runtime_error{with_errno(path)};
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        char pid[32] = {};
        [[maybe_unused]] auto const count = ::pread(lock.get(), pid, sizeof pid - 1, 0);
        throw folder_lock::already_running{"a publisher runs already for this user (process " +
                                           std::string{pid, std::strcspn(pid, "\n")} + ", " + folder + ")"};
    }
    std::string const pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(lock.get(), 0) != 0 || ::pwrite(lock.get(), pid.data(), pid.size(), 0) < 0)
        throw std::runtime_error{with_errno(path)};
    return lock;
}

open::descriptor listen_at(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error{"path too long for a socket: " + path};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    open::descriptor socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    // Whoever left it behind is gone: we hold the lock.
    ::unlink(path.c_str());
    if (!socket || ::bind(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        ::chmod(path.c_str(), 0600) != 0 || ::listen(socket.get(), 16) != 0)
        throw std::runtime_error{with_errno(path)};
    return socket;
}

bool same_user(int socket)
{
    ucred other{};
    socklen_t size = sizeof other;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 && other.uid == ::getuid();
}

// A connection's directory is the publisher, with the connection's waker for its source.
class directory : public channel_directory
{
  public:
    directory(publisher& owner, std::shared_ptr<open::waker> waker) : owner_(owner), waker_(std::move(waker)) {}
    ~directory() override
    {
        if (held_)
            owner_.close_source(*held_);
    }

    std::shared_ptr<channel_events> open_source(introduction const& who) override
    {
        held_ = owner_.open_source(who, [waker = waker_] { waker->wake(); });
        return held_ ? held_->of : nullptr;
    }
    std::string status() override { return owner_.status(); }

    std::optional<held_source> const& held() const { return held_; }

  private:
    publisher& owner_;
    std::shared_ptr<open::waker> const waker_;
    std::optional<held_source> held_;
};

} // namespace

folder_lock::folder_lock(std::string folder) : folder_(std::move(folder)), lock_(lock_folder(folder_)) {}

channel_server::channel_server(folder_lock const& lock, publisher& owner, open::descriptor listening)
    : path_(listening ? std::string{} : open::socket_path(lock.folder())), owner_(owner),
      socket_(listening ? std::move(listening) : listen_at(path_)),
      last_source_(clock::now().time_since_epoch().count()), thread_([this] { accept_all(); })
{
}

channel_server::~channel_server()
{
    if (!path_.empty())
        ::unlink(path_.c_str());
    stopping_ = true;
    waker_.wake();
    thread_.join();
}

std::chrono::steady_clock::duration channel_server::idle_for() const
{
    if (owner_.sources() > 0)
        return {};
    return clock::now() - clock::time_point{clock::duration{last_source_.load()}};
}

void channel_server::accept_all()
{
    while (!stopping_) {
        pollfd waiting[2] = {{socket_.get(), POLLIN, 0}, {waker_.fd(), POLLIN, 0}};
        ::poll(waiting, 2, -1);
        waker_.drain();
        reap(false);
        if (!(waiting[0].revents & POLLIN))
            continue;
        open::descriptor connected{::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!connected)
            continue;
        if (!same_user(connected.get())) {
            log::warning("a process of another user was turned away");
            continue;
        }
        if (connections_.size() >= max_connections) {
            log::warning("more than ", max_connections, " local connections: one was turned away");
            continue;
        }
        start(std::move(connected));
    }
    reap(true);
}

void channel_server::start(open::descriptor connected)
{
    auto& self = connections_.emplace_back();
    self.thread = std::thread{[this, &self, socket = std::move(connected)]() mutable {
        serve(self, std::move(socket));
        self.done = true;
        waker_.wake();
    }};
}

void channel_server::reap(bool all)
{
    if (all)
        for (auto& one : connections_)
            one.waker->wake();
    connections_.remove_if([&](connection& one) {
        if (!all && !one.done)
            return false;
        one.thread.join();
        return true;
    });
}

void channel_server::serve(connection& self, open::descriptor connected)
{
    directory opened{owner_, self.waker};
    try {
        channel peer{std::move(connected), opened, [waker = self.waker] { waker->wake(); }};
        talk(self, peer, opened.held());
    } catch (protocol_error const& error) {
        log::warning("a local connection was ended: ", error.what());
    }
    if (opened.held())
        keep_slate(self, *opened.held());
}

// Until one of the two has enough.
void channel_server::talk(connection& self, channel& peer, std::optional<held_source> const& held)
{
    auto const began = clock::now();
    std::optional<unsigned> told;
    // Nor goes on one whose sender has connected anew.
    while (!stopping_ && !(held && held->is_over())) {
        unsigned const watched = held ? held->of->watched() : source::nobody;
        bool const wanted = watched != source::nobody;
        if (held && told != watched) {
            // Somebody came right after the last one had gone. A host that rests gives its picture only when it hears
            // that it is wanted.
            if (wanted && told.value_or(source::nobody) != source::nobody && !peer.send_wants(false, false))
                return;
            if (!peer.send_wants(wanted, wanted))
                return;
            told = watched;
        }
        int const timeout = wanted ? static_cast<int>(tick_interval.count()) : peer.introduced() ? -1 : 1000;
        short const events = static_cast<short>(peer.wants_to_write() ? POLLIN | POLLOUT : POLLIN);
        pollfd waiting[2] = {{peer.fd(), events, 0}, {self.waker->fd(), POLLIN, 0}};
        ::poll(waiting, 2, timeout);
        if (waiting[1].revents & POLLIN)
            self.waker->drain();
        if (!peer.give_slots_back())
            return;
        if ((waiting[0].revents & POLLOUT) && !peer.flush())
            return;
        if ((waiting[0].revents & (POLLIN | POLLHUP | POLLERR)) && !peer.receive())
            return;
        if (held)
            last_source_ = clock::now().time_since_epoch().count();
        if (wanted)
            held->of->tick(monotonic_ns());
        if (!peer.introduced() && clock::now() - began > silence_allowed)
            return;
    }
}

// Nobody sends any more. Until a sender comes back, or for as long as viewers are to be kept.
void channel_server::keep_slate(connection& self, held_source const& held)
{
    auto const until = clock::now() + owner_.leave_source(held);
    while (!stopping_ && clock::now() < until && owner_.waits(held)) {
        bool const watched = held.of->wanted();
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - clock::now());
        pollfd waiting{self.waker->fd(), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>((watched ? std::min(left, tick_interval) : left).count()));
        self.waker->drain();
        if (watched)
            held.of->tick(monotonic_ns());
        last_source_ = clock::now().time_since_epoch().count();
    }
}

} // namespace quillo::publisher
