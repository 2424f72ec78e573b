#include "publisher/serve.h"

#include "publisher/channel_server.h"
#include "publisher/log.h"
#include "sender/open/runtime_folder.h"

#include <malloc.h>
#include <signal.h>

#include <ctime>

namespace quillo::publisher {

namespace {

constexpr int frame_sized = 1 << 20; // bytes; larger pieces go back to the system at once when they are freed

// Blocked in every thread from here on, and taken by the one that waits.
sigset_t block_signals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    return set;
}

} // namespace

void serve(serve_settings const& settings)
{
    sigset_t const signals = block_signals();
    mallopt(M_MMAP_THRESHOLD, frame_sized);
    folder_lock const lock{open::runtime_folder()};
    gst_init(nullptr, nullptr);

    publisher sources{settings.publishing};
    channel_server const local{lock, sources};
    log::info("publisher ", QUILLO_VERSION, " serves at ", sources.url(""));

    for (;;) {
        timespec const second{1, 0};
        if (int const caught = ::sigtimedwait(&signals, nullptr, settings.on_demand ? &second : nullptr); caught > 0) {
            log::info(caught == SIGINT ? "interrupted" : "told to end");
            return;
        }
        if (settings.on_demand && local.idle_for() > settings.linger) {
            log::info("no sender for ", settings.linger.count(), " s");
            return;
        }
    }
}

} // namespace quillo::publisher
