#include "publisher/serve.h"

#include "publisher/activation.h"
#include "publisher/channel_server.h"
#include "publisher/doors/certificate.h"
#include "publisher/log.h"
#include "publisher/machine.h"
#include "publisher/page/early_key.h"
#include "publisher/page/page_server.h"
#include "sender/open/runtime_folder.h"

#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>

#include <ctime>
#include <optional>
#include <thread>

namespace quillo::publisher {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds others_end{5}; // the time that another publisher may need to end

constexpr int frame_sized = 1 << 20; // bytes; larger pieces go back to the system at once when they are freed
// Smaller ones, a picture's packets, do not: they come again with the next picture, and cost a page fault each.
constexpr int kept_free = 256 << 20;
// Places that threads take memory from, each of which keeps what was given back to it: with one for every thread what
// many receivers left behind would add up.
constexpr int arenas = 2;

// Blocked in every thread from here on, and taken by the one that waits.
sigset_t block_signals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    return set;
}

// Threads that begin from here on have it too. Whoever started this process may have asked for more.
void let_hosts_go_first(int nice)
{
    if (::getpriority(PRIO_PROCESS, 0) < nice)
        ::setpriority(PRIO_PROCESS, 0, nice);
}

void set_log(configuration const& from)
{
    log::set_level(from.log_level);
    log::set_json(from.log_json);
}

viewer_limits viewer_limits_of(configuration const& from)
{
    return {static_cast<std::size_t>(from.raw_viewers), static_cast<std::size_t>(from.encoded_viewers)};
}

rtsp_locks locks_of(configuration const& from)
{
    rtsp_locks locks{from.user, from.password, nullptr};
    if (from.tls && !from.certificate.empty())
        locks.certificate = read_certificate(from.certificate, from.key);
    else if (from.tls)
        locks.certificate = own_certificate(own_certificate_folder());
    return locks;
}

publisher_settings settings_of(configuration const& from)
{
    publisher_settings made;
    made.rtsp.address = from.address;
    made.rtsp.port = from.tls ? from.tls_port : from.port;
    made.rtsp.doors = door_settings_of(from);
    made.rtsp.locks = locks_of(from);
    made.limits = viewer_limits_of(from);
    made.slate = from.slate;
    made.encoder = from.encoder;
    made.announce = from.announce;
    return made;
}

void say_who_may_come(configuration const& from, rtsp_locks const& locks)
{
    if (locks.certificate)
        log::notice("connections are encrypted; the certificate's SHA-256 fingerprint is ",
                    fingerprint(locks.certificate.get()));
    if (from.allow == *address_rules::parse("any") && from.password.empty())
        log::warning("everybody in the world may watch: allow is \"any\" and there is no password");
}

http_settings page_settings_of(configuration const& from, rtsp_locks const& locks)
{
    bool const here = is_loopback(from.page_address);
    http_settings made;
    made.address = here ? "localhost" : from.page_address;
    made.port = from.page_port;
    made.user = locks.user;
    made.password = locks.password;
    made.is_allowed = [rules = from.allow](std::string const& address) { return rules.allow(address); };
    // Nobody stands between a machine and itself, and the setup button of hosts opens http.
    if (!here)
        made.certificate = locks.certificate;
    return made;
}

// Without a port for it, sources are published all the same.
std::unique_ptr<page_server> open_page(http_settings const& settings, publisher& shown)
{
    try {
        auto page = std::make_unique<page_server>(settings, shown);
        log::notice("the page is at ", page->url());
        return page;
    } catch (std::runtime_error const& error) {
        log::error(error.what());
        return nullptr;
    }
}

// A publisher that is ending holds its folder a little longer than the socket at which senders would find it.
folder_lock lock_when_free(std::string const& folder, std::chrono::seconds patience)
{
    auto const until = steady::now() + patience;
    for (;;) {
        try {
            return folder_lock{folder};
        } catch (folder_lock::already_running const&) {
            if (steady::now() >= until)
                throw;
        }
        std::this_thread::sleep_for(20ms);
    }
}

} // namespace

void serve(serve_settings const& settings)
{
    sigset_t const signals = block_signals();
    mallopt(M_MMAP_THRESHOLD, frame_sized);
    mallopt(M_TRIM_THRESHOLD, kept_free);
    mallopt(M_TOP_PAD, frame_sized);
    mallopt(M_ARENA_MAX, arenas);
    configuration const initial = settings.configured.read();
    set_log(initial);
    let_hosts_go_first(initial.nice);
    folder_lock const lock = lock_when_free(open::runtime_folder(), settings.on_demand ? others_end : 0s);
    gst_init(nullptr, nullptr);
    std::optional<early_key> key;
    if (initial.page)
        key.emplace();

    auto const publishing = settings_of(initial);
    publisher sources{publishing};
    auto const page = initial.page ? open_page(page_settings_of(initial, publishing.rtsp.locks), sources) : nullptr;
    channel_server const local{lock, sources, activated_socket()};
    live_configuration changes{settings.configured, initial, [&](configuration const& from) {
                                   auto locks = locks_of(from);
                                   if (!publishing.rtsp.locks.certificate)
                                       locks.certificate = nullptr;
                                   sources.change(door_settings_of(from), locks, viewer_limits_of(from), from.slate);
                                   set_log(from);
                               }};
    log::notice("publisher ", QUILLO_VERSION, " serves at ", sources.url(""));
    say_who_may_come(initial, publishing.rtsp.locks);

    for (;;) {
        timespec const second{1, 0};
        int const caught = ::sigtimedwait(&signals, nullptr, settings.on_demand ? &second : nullptr);
        if (caught == SIGHUP) {
            changes.look_now();
        } else if (caught > 0) {
            log::info(caught == SIGINT ? "interrupted" : "told to end");
            break;
        } else if (settings.on_demand && local.idle_for() > settings.linger) {
            log::info("no sender for ", settings.linger.count(), " s");
            break;
        }
    }
    log::flush();
}

} // namespace quillo::publisher
