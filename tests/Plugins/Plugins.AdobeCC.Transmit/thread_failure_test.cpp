// A program of its own: it takes the place of the platform's thread creation.
#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "tests/support/transmit_fixture.h"

namespace {

bool no_more_threads = false;

} // namespace

extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, pthread_attr_t const* attributes, void* (*body)(void*), void* argument)
{
    if (no_more_threads)
        return EAGAIN;
    static auto* const real = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return real(thread, attributes, body, argument);
}

namespace quillo::test {

namespace {

class ThreadFailure : public TransmitTest
{
};

TEST_F(ThreadFailure, TheErrorReachesTheHostAndTheNextStartWorks)
{
    create_instance();
    activate(true, false);
    no_more_threads = true;
    try {
        start_clock();
        ADD_FAILURE() << "no error";
    } catch (std::system_error const& error) {
        EXPECT_EQ(std::string(error.what()).rfind("thread constructor failed", 0), 0u) << error.what();
        EXPECT_EQ(error.code().value(), EAGAIN);
    }
    no_more_threads = false;
    EXPECT_EQ(stop_clock(), 0);
    EXPECT_EQ(log.count("audio"), 0u);

    EXPECT_EQ(start_clock(), 0);
    EXPECT_TRUE(log.wait_for("clock"));
    EXPECT_EQ(stop_clock(), 0);
}

} // namespace

} // namespace quillo::test
