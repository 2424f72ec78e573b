#include "tests/support/held_threads.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace quillo::testing {

namespace {

std::atomic<long> hold_ms{0};
static_assert(std::atomic<long>::is_always_lock_free); // read in a signal handler

void hold(int)
{
    int const before = errno;
    long const ms = hold_ms;
    timespec left{ms / 1000, ms % 1000 * 1'000'000};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    errno = before;
}

} // namespace

int hold_threads(std::string const& name, std::chrono::milliseconds during)
{
    hold_ms = during.count();
    struct sigaction action = {};
    action.sa_handler = hold;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGUSR1, &action, nullptr);
    int held = 0;
    for (auto const& thread : std::filesystem::directory_iterator{"/proc/self/task"}) {
        std::string called;
        std::getline(std::ifstream{thread.path() / "comm"}, called);
        if (called != name)
            continue;
        auto const id = static_cast<pid_t>(std::stoi(thread.path().filename()));
        held += ::syscall(SYS_tgkill, ::getpid(), id, SIGUSR1) == 0 ? 1 : 0;
    }
    return held;
}

} // namespace quillo::testing
