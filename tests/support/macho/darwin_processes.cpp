#include "tests/support/macho/darwin.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillo::macho {

namespace {

using darwin_signals = unsigned;

// Darwin's signal numbers where they differ.
constexpr std::array<std::array<int, 2>, 13> signals = {{{10, SIGBUS},
                                                         {12, SIGSYS},
                                                         {16, SIGURG},
                                                         {17, SIGSTOP},
                                                         {18, SIGTSTP},
                                                         {19, SIGCONT},
                                                         {20, SIGCHLD},
                                                         {23, SIGIO},
                                                         {30, SIGUSR1},
                                                         {31, SIGUSR2},
                                                         {21, SIGTTIN},
                                                         {22, SIGTTOU},
                                                         {28, SIGWINCH}}};

int signal_here(int darwin)
{
    for (auto const& each : signals)
        if (each[0] == darwin)
            return each[1];
    return darwin == 7 || darwin == 29 ? 0 : darwin; // two that do not exist here
}

sigset_t set_here(darwin_signals darwin)
{
    sigset_t set;
    sigemptyset(&set);
    for (int number = 1; number < 32; ++number)
        if (darwin >> (number - 1) & 1 && signal_here(number) != 0)
            sigaddset(&set, signal_here(number));
    return set;
}

darwin_signals set_there(sigset_t const& set)
{
    darwin_signals darwin = 0;
    for (int number = 1; number < 32; ++number)
        if (signal_here(number) != 0 && sigismember(&set, signal_here(number)) == 1)
            darwin |= 1u << (number - 1);
    return darwin;
}

int set_mask(int how, darwin_signals const* wanted, darwin_signals* before)
{
    sigset_t const set = set_here(wanted == nullptr ? 0 : *wanted);
    sigset_t old;
    int const result = pthread_sigmask(how - 1, wanted == nullptr ? nullptr : &set, &old); // numbered from 1 there
    if (before != nullptr)
        *before = set_there(old);
    return result;
}

struct attributes
{
    posix_spawnattr_t here;
    bool close_all = false;
};

int init_attributes(attributes** made)
{
    *made = new attributes;
    return posix_spawnattr_init(&(*made)->here);
}
int destroy_attributes(attributes** made)
{
    posix_spawnattr_destroy(&(*made)->here);
    delete *made;
    return 0;
}
int set_attribute_flags(attributes** made, short flags)
{
    if (flags & ~0x440C)
        std::abort();
    (*made)->close_all = flags & 0x4000;
    int const here = (flags & 0x4 ? POSIX_SPAWN_SETSIGDEF : 0) | (flags & 0x8 ? POSIX_SPAWN_SETSIGMASK : 0) |
                     (flags & 0x400 ? POSIX_SPAWN_SETSID : 0);
    return posix_spawnattr_setflags(&(*made)->here, static_cast<short>(here));
}
int set_default_signals(attributes** made, darwin_signals const* which)
{
    sigset_t const set = set_here(*which);
    return posix_spawnattr_setsigdefault(&(*made)->here, &set);
}
int set_spawned_mask(attributes** made, darwin_signals const* which)
{
    sigset_t const set = set_here(*which);
    return posix_spawnattr_setsigmask(&(*made)->here, &set);
}

int init_actions(posix_spawn_file_actions_t** made)
{
    *made = new posix_spawn_file_actions_t;
    return posix_spawn_file_actions_init(*made);
}
int destroy_actions(posix_spawn_file_actions_t** made)
{
    posix_spawn_file_actions_destroy(*made);
    delete *made;
    return 0;
}
int add_open(posix_spawn_file_actions_t** made, int descriptor, char const* path, int flags, unsigned short mode)
{
    int const here = (flags & O_ACCMODE) | (flags & 0x8 ? O_APPEND : 0) | (flags & 0x200 ? O_CREAT : 0) |
                     (flags & 0x400 ? O_TRUNC : 0);
    return posix_spawn_file_actions_addopen(*made, descriptor, path, here, mode);
}
int add_copy(posix_spawn_file_actions_t** made, int from, int to)
{
    return posix_spawn_file_actions_adddup2(*made, from, to);
}

int spawn(pid_t* child, char const* path, posix_spawn_file_actions_t** actions, attributes** how,
          char* const* arguments, char* const* environment)
{
    if ((*how)->close_all)
        posix_spawn_file_actions_addclosefrom_np(*actions, STDERR_FILENO + 1);
    return darwin_number(posix_spawn(child, path, *actions, &(*how)->here, arguments, environment));
}

int wait_for(int child, int* status, int options)
{
    return told(::waitpid(child, status, options)); // the same layout of the status
}

} // namespace

std::span<adapter const> process_adapters()
{
    static std::array const table = {
        adapt("_posix_spawn", spawn),
        adapt("_posix_spawn_file_actions_adddup2", add_copy),
        adapt("_posix_spawn_file_actions_addopen", add_open),
        adapt("_posix_spawn_file_actions_destroy", destroy_actions),
        adapt("_posix_spawn_file_actions_init", init_actions),
        adapt("_posix_spawnattr_destroy", destroy_attributes),
        adapt("_posix_spawnattr_init", init_attributes),
        adapt("_posix_spawnattr_setflags", set_attribute_flags),
        adapt("_posix_spawnattr_setsigdefault", set_default_signals),
        adapt("_posix_spawnattr_setsigmask", set_spawned_mask),
        adapt("_pthread_sigmask", set_mask),
        adapt("_waitpid", wait_for),
    };
    return table;
}

} // namespace quillo::macho
