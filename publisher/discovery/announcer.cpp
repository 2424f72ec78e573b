#include "publisher/discovery/backend.h"
#include "publisher/discovery/discovery.h"

#include "lib/text/utf8.h"

#include <avahi-common/alternative.h>
#include <avahi-common/malloc.h>
#include <avahi-core/log.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace quillo::discovery {

using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

namespace {

constexpr std::size_t longest_name = 63; // bytes, of one label in DNS
constexpr auto reopen_pause = 1s;
constexpr auto retry_pause = 5s;
constexpr auto look_for_daemon_pause = 10s; // while this process answers by itself

std::string next_name(std::string const& taken)
{
    std::unique_ptr<char, released_by<avahi_free>> const next{avahi_alternative_service_name(taken.c_str())};
    return next.get();
}

} // namespace

std::string instance_name(std::string_view machine, std::string_view source)
{
    auto const host = machine.substr(0, machine.find('.'));
    return std::string{text::cut(std::string{host} + " (" + std::string{source} + ")", longest_name)};
}

// The wishes of all threads, and the one thread that carries them out. Avahi's callbacks only note states; after every
// event the thread compares what is with what should be.
class announcer::worker
{
  public:
    explicit worker(trouble report) : poll(avahi_simple_poll_new()), say(std::move(report))
    {
        if (!poll)
            throw std::runtime_error{"no event loop for DNS-SD"};
        avahi_set_log_function([](AvahiLogLevel, char const*) {});
        thread = std::thread{[this] { run(); }};
    }
    ~worker()
    {
        tell([this] { stopping = true; });
        thread.join();
    }

    token announce(service what, named on_named)
    {
        token id = 0;
        tell([&] {
            id = ++last_token;
            wishes.push_back({id, std::move(what), std::move(on_named), true});
        });
        return id;
    }
    void withdraw(token id)
    {
        tell([&] { wishes.push_back({id, {}, {}, false}); });
    }

  private:
    struct wish
    {
        token id;
        service what;
        named on_named;
        bool wanted;
    };
    struct entry
    {
        token id;
        service what;
        named on_named;
        std::string name;      // the one tried now
        std::string told_name; // the one that on_named knows
        std::unique_ptr<registration> where;
        steady::time_point next_try;
    };

    template <class Change>
    void tell(Change const& change)
    {
        std::lock_guard const guard{lock};
        change();
        avahi_simple_poll_wakeup(poll.get());
    }

    void run()
    {
        while (take_wishes()) {
            auto const now = steady::now();
            auto next = steady::time_point::max();
            keep_backend(now, next);
            for (auto& one : entries)
                keep(one, now, next);
            int timeout = -1;
            if (next != steady::time_point::max())
                timeout = static_cast<int>(std::clamp<std::int64_t>(
                    std::chrono::ceil<std::chrono::milliseconds>(next - now).count(), 0, 60'000));
            avahi_simple_poll_iterate(poll.get(), timeout);
        }
        entries.clear();
        network.reset();
    }

    // False: it is over.
    bool take_wishes()
    {
        std::vector<wish> taken;
        {
            std::lock_guard const guard{lock};
            if (stopping)
                return false;
            taken.swap(wishes);
        }
        for (auto& one : taken) {
            if (one.wanted) {
                auto name = one.what.name;
                entries.push_back({one.id, std::move(one.what), std::move(one.on_named), std::move(name), {}, {}, {}});
            } else
                std::erase_if(entries, [&](entry const& old) { return old.id == one.id; });
        }
        return true;
    }

    void keep_backend(steady::time_point now, steady::time_point& next)
    {
        if (network && network->state() == condition::lost) {
            close("the connection to avahi-daemon is lost");
            next_open = now + reopen_pause;
        }
        if (!network && now >= next_open)
            open(now);
        else if (by_itself && now >= next_look)
            look_for_daemon(now);
        if (network && network->state() == condition::taken)
            network->rename_machine();
        if (!network)
            next = std::min(next, next_open);
        else if (by_itself)
            next = std::min(next, next_look);
    }

    void open(steady::time_point now)
    {
        network = open_client(avahi_simple_poll_get(poll.get()), role::announces);
        by_itself = !network;
        if (by_itself) {
            network = open_own(avahi_simple_poll_get(poll.get()), role::announces);
            next_look = now + look_for_daemon_pause;
        }
        next_open = now + retry_pause;
        if (!network)
            report("names cannot be announced: neither avahi-daemon nor multicast sockets are there");
        else if (by_itself)
            report("no D-Bus to reach avahi-daemon: this process announces names by itself");
        else if (network->state() == condition::waiting)
            report("names will be announced as soon as avahi-daemon runs");
    }

    void look_for_daemon(steady::time_point now)
    {
        next_look = now + look_for_daemon_pause;
        auto daemon = open_client(avahi_simple_poll_get(poll.get()), role::announces);
        if (!daemon || daemon->state() != condition::ready)
            return;
        close("avahi-daemon runs now, and announces the names");
        network = std::move(daemon);
        by_itself = false;
    }

    void close(std::string const& why)
    {
        for (auto& one : entries)
            one.where.reset();
        network.reset();
        by_itself = false;
        report(why);
    }

    void keep(entry& one, steady::time_point now, steady::time_point& next)
    {
        bool const ready = network && network->state() == condition::ready;
        if (!ready) {
            one.where.reset();
            return;
        }
        if (!one.where && now >= one.next_try)
            one.where = network->add(one.what, one.name);
        while (one.where && one.where->state() == AVAHI_ENTRY_GROUP_COLLISION) {
            one.name = next_name(one.name);
            one.where.reset();
            one.where = network->add(one.what, one.name);
        }
        if (one.where && one.where->state() == AVAHI_ENTRY_GROUP_FAILURE) {
            report("\"" + one.name + "\" cannot be announced now");
            one.where.reset();
            one.next_try = now + retry_pause;
        }
        if (!one.where)
            next = std::min(next, one.next_try);
        else if (one.where->state() == AVAHI_ENTRY_GROUP_ESTABLISHED && one.told_name != one.name) {
            one.told_name = one.name;
            if (one.on_named)
                one.on_named(one.name);
        }
    }

    void report(std::string const& line)
    {
        if (say && line != std::exchange(last_line, line))
            say(line);
    }

    poll_ptr const poll;
    trouble const say;

    std::mutex lock; // guards the next four
    std::vector<wish> wishes;
    token last_token = 0;
    bool stopping = false;

    // the thread's own
    std::unique_ptr<backend> network;
    bool by_itself = false;
    std::vector<entry> entries; // their registrations go before the network does
    steady::time_point next_open;
    steady::time_point next_look;
    std::string last_line;

    std::thread thread;
};

announcer::announcer(trouble report) : work(std::make_unique<worker>(std::move(report))) {}

announcer::~announcer() = default;

announcer::token announcer::announce(service what, named on_named)
{
    return work->announce(std::move(what), std::move(on_named));
}

void announcer::withdraw(token id) { work->withdraw(id); }

} // namespace quillo::discovery
