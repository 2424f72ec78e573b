// Memory that is not there and system calls that fail, each of them once: the library lives on, the host waits for
// nothing, and what is lost is told. A program of its own: it takes the place of operator new, and of the system calls
// of the library that is linked into it.
#include "tests/sender/open/sender_fixture.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <mutex>
#include <new>
#include <regex>
#include <thread>

namespace {

enum class what { allocation, system_call };

std::atomic<what> chosen{what::allocation};
std::atomic<int> counted{0};
std::atomic<int> to_fail{0}; // the how manieth; 0: none
std::atomic<char const*> failed{nullptr};

// This thread runs the library's code. Its own thread says so itself, by giving itself a name.
thread_local bool in_library = false;

bool fails(what which, char const* name) noexcept
{
    if (!in_library || which != chosen || ++counted != to_fail)
        return false;
    failed = name;
    return true;
}

// What the library wrote to the log.
std::mutex log_lock;
std::string log_text;

void* allocate(std::size_t size)
{
    if (fails(what::allocation, "operator new"))
        throw std::bad_alloc{};
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc{};
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

// The linker sends the library's calls here; see CMakeLists.txt.
// NOLINTBEGIN(bugprone-reserved-identifier, bugprone-macro-parentheses)
#define QUILLO_MAY_FAIL(type, name, parameters, arguments, result, error)                                              \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters                                                                           \
    {                                                                                                                  \
        if (!fails(what::system_call, #name))                                                                          \
            return __real_##name arguments;                                                                            \
        errno = error;                                                                                                 \
        return result;                                                                                                 \
    }

QUILLO_MAY_FAIL(int, getentropy, (void* to, std::size_t size), (to, size), -1, EIO)
QUILLO_MAY_FAIL(int, pipe2, (int* ends, int flags), (ends, flags), -1, EMFILE)
QUILLO_MAY_FAIL(int, socket, (int family, int type, int protocol), (family, type, protocol), -1, EMFILE)
QUILLO_MAY_FAIL(int, connect, (int fd, sockaddr const* to, socklen_t size), (fd, to, size), -1, EAGAIN)
QUILLO_MAY_FAIL(int, getsockopt, (int fd, int level, int name, void* value, socklen_t* size),
                (fd, level, name, value, size), -1, ENOBUFS)
QUILLO_MAY_FAIL(ssize_t, sendmsg, (int fd, msghdr const* message, int flags), (fd, message, flags), -1, ENOBUFS)
QUILLO_MAY_FAIL(ssize_t, recv, (int fd, void* to, std::size_t size, int flags), (fd, to, size, flags), -1, ECONNRESET)
QUILLO_MAY_FAIL(ssize_t, read, (int fd, void* to, std::size_t size), (fd, to, size), -1, EINTR)
QUILLO_MAY_FAIL(int, poll, (pollfd * sources, nfds_t count, int timeout), (sources, count, timeout), -1, ENOMEM)
QUILLO_MAY_FAIL(int, memfd_create, (char const* name, unsigned flags), (name, flags), -1, EMFILE)
QUILLO_MAY_FAIL(int, posix_fallocate, (int fd, off_t from, off_t size), (fd, from, size), ENOSPC, 0)
QUILLO_MAY_FAIL(void*, mmap, (void* at, std::size_t size, int access, int flags, int fd, off_t from),
                (at, size, access, flags, fd, from), MAP_FAILED, ENOMEM)
QUILLO_MAY_FAIL(int, mkdir, (char const* path, mode_t mode), (path, mode), -1, ENOSPC)
QUILLO_MAY_FAIL(int, lstat, (char const* path, struct stat* found), (path, found), -1, EACCES)
QUILLO_MAY_FAIL(int, stat, (char const* path, struct stat* found), (path, found), -1, EACCES)
QUILLO_MAY_FAIL(int, access, (char const* path, int mode), (path, mode), -1, EACCES)
QUILLO_MAY_FAIL(pid_t, waitpid, (pid_t process, int* status, int options), (process, status, options), -1, EINTR)
QUILLO_MAY_FAIL(int, posix_spawn_file_actions_addopen,
                (posix_spawn_file_actions_t * actions, int fd, char const* path, int flags, mode_t mode),
                (actions, fd, path, flags, mode), ENOMEM, 0)
QUILLO_MAY_FAIL(int, posix_spawn,
                (pid_t * process, char const* path, posix_spawn_file_actions_t const* actions,
                 posix_spawnattr_t const* attributes, char* const* arguments, char* const* environment),
                (process, path, actions, attributes, arguments, environment), ENOMEM, 0)

extern "C" int __real_fcntl(int fd, int command, ...);
extern "C" int __wrap_fcntl(int fd, int command, ...)
{
    va_list more;
    va_start(more, command);
    auto const value = va_arg(more, long);
    va_end(more);
    if (!fails(what::system_call, "fcntl"))
        return __real_fcntl(fd, command, value);
    errno = EPERM;
    return -1;
}

extern "C" ssize_t __real_write(int fd, void const* from, std::size_t size);
extern "C" ssize_t __wrap_write(int fd, void const* from, std::size_t size)
{
    if (in_library && fd == STDERR_FILENO) {
        in_library = false;
        {
            std::lock_guard const guard{log_lock};
            log_text.append(static_cast<char const*>(from), size);
        }
        in_library = true;
        return static_cast<ssize_t>(size);
    }
    if (!fails(what::system_call, "write"))
        return __real_write(fd, from, size);
    errno = EINTR;
    return -1;
}

extern "C" int __real_pthread_setname_np(pthread_t thread, char const* name);
extern "C" int __wrap_pthread_setname_np(pthread_t thread, char const* name)
{
    in_library = true;
    return __real_pthread_setname_np(thread, name);
}
// NOLINTEND(bugprone-reserved-identifier, bugprone-macro-parentheses)

namespace quillo::test {

namespace {

using record = fake_publisher::record;

std::string logged()
{
    std::lock_guard const guard{log_lock};
    return log_text;
}

// A call of the host's.
void call(auto const& function)
{
    in_library = true;
    auto const took = milliseconds_of(function);
    in_library = false;
    EXPECT_LT(took, 1s) << "the host waited";
}

// Sound that came after a gap.
std::uint64_t missing_blocks(record const& seen, std::uint64_t samples)
{
    std::uint64_t missing = 0;
    for (std::size_t at = 1; at < seen.sounds.size(); ++at)
        missing += (seen.sounds[at].head.sample_index - seen.sounds[at - 1].head.sample_index) / samples - 1;
    return missing;
}

std::uint64_t blocks_told_lost(std::string const& text)
{
    std::uint64_t told = 0;
    std::regex const line{R"((\d+) blocks of sound)"};
    for (std::sregex_iterator at{text.begin(), text.end(), line}; at != std::sregex_iterator{}; ++at)
        told += std::stoull((*at)[1]);
    return told;
}

class failing_calls : public sender_test
{
  protected:
    // One life after the other, a later call failing in each, until none is left to fail.
    void fail_each(what which, auto const& life)
    {
        ::setenv("QUILLO_LOG", "info", 1);
        chosen = which;
        for (int number = 1; number < 2000; ++number) {
            log_text.clear();
            failed = nullptr;
            counted = 0;
            to_fail = number;
            life();
            to_fail = 0;
            if (!failed) {
                EXPECT_GT(number, 10) << "hardly anything was made to fail";
                return;
            }
            ASSERT_FALSE(HasFailure()) << "call " << number << ", " << failed << ", the log: " << logged();
        }
        FAIL() << "there is no end of calls";
    }

    void destroy(SenderHandle sender)
    {
        in_library = true;
        EXPECT_LT(milliseconds_of([&] { Quillolib_send_destroy(sender); }), 1s) << "its thread did not end by itself";
        in_library = false;
    }

    SenderSettings const settings{.sourceName = "a name too long for the place inside a string",
                                  .groups = nullptr,
                                  .clockVideo = false,
                                  .clockAudio = false};
};

std::string what_fails(testing::TestParamInfo<what> const& test)
{
    return test.param == what::allocation ? "WithoutMemory" : "WithFailingCalls";
}

class sending : public failing_calls, public testing::WithParamInterface<what>
{
};

} // namespace

TEST_P(sending, GoesOnAndTellsWhatWasLost)
{
    constexpr std::int32_t samples = 48;
    std::vector<float> const sound(2 * samples);
    SenderAudioFrame const block{48000, 2, samples, 0, sound.data(), samples * 4};
    test_frame const frame{64, 36, SenderFourCC_BGRA};
    auto unknown = frame.record;
    unknown.fourCC = 1;

    fail_each(GetParam(), [&] {
        fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
        SenderHandle sender = nullptr;
        call([&] { sender = Quillolib_send_create(&settings); });
        if (!sender) {
            EXPECT_TRUE(failed) << "told by the null handle";
            return;
        }
        call([&] { Quillolib_send_send_video(sender, &unknown); });
        auto const arrives = [](record const& seen) { return seen.pictures.size() >= 3 && seen.sounds.size() >= 3; };
        bool arrived = false;
        for (auto const end = steady::now() + 10s; !arrived && steady::now() < end;) {
            call([&] { Quillolib_send_send_video_async(sender, &frame.record); });
            call([&] { Quillolib_send_send_audio(sender, &block); });
            arrived = publisher.wait_until(arrives, 2ms);
        }
        EXPECT_TRUE(arrived) << "it did not go on";
        destroy(sender);
        EXPECT_TRUE(publisher.wait_until([](record const& seen) { return !seen.connected; }));

        auto const seen = publisher.seen();
        auto const text = logged();
        EXPECT_EQ(seen.violations, std::vector<std::string>{});
        if (seen.connections > 1)
            EXPECT_TRUE(
                std::regex_search(text, std::regex{"no connection to the publisher|cannot reach the publisher"}))
                << "a connection broke unsaid: " << text;
        else
            EXPECT_LE(missing_blocks(seen, samples), blocks_told_lost(text)) << text;
    });
}

INSTANTIATE_TEST_SUITE_P(, sending, testing::Values(what::allocation, what::system_call), what_fails);

class starting : public sending
{
};

TEST_P(starting, StartsAPublisherOrSaysWhyNot)
{
    ::setenv("QUILLO_PUBLISHER", "/bin/true", 1);
    fail_each(GetParam(), [&] {
        SenderHandle sender = nullptr;
        call([&] { sender = Quillolib_send_create(&settings); });
        if (!sender) {
            EXPECT_TRUE(failed) << "told by the null handle";
            return;
        }
        auto const end = steady::now() + 10s;
        while (logged().empty() && steady::now() < end)
            std::this_thread::yield();
        EXPECT_NE(logged(), "") << "neither started nor told";
        destroy(sender);
    });
}

INSTANTIATE_TEST_SUITE_P(, starting, testing::Values(what::allocation, what::system_call), what_fails);

} // namespace quillo::test
