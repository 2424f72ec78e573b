// The loader itself, on a module that asks it everything: each way of compiling leaves other unwind records behind.
#include "tests/support/macho/image.h"
#include "tests/support/macho/system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>

namespace {

using quillo::macho::image;

std::string path_of(std::string const& name) { return std::string(PROBE_FOLDER) + "/" + name + ".bundle"; }

template <class F>
F* function(image const& module, std::string const& name)
{
    void* const found = module.exported("_" + name);
    if (found == nullptr)
        throw std::runtime_error(name + " is not exported");
    return reinterpret_cast<F*>(found);
}

class Loader : public testing::TestWithParam<char const*>
{
  protected:
    image module{path_of(GetParam()), quillo::macho::system_symbol};

    template <class F>
    F* function(std::string const& name)
    {
        return ::function<F>(module, name);
    }
};

int host_leaf(int value) { return value + 1; }
int host_leaf_that_throws(int) { throw std::length_error("from the host"); }

TEST_P(Loader, RunsInitialisersOnce) { EXPECT_EQ(function<int()>("probe_constructed")(), 41); }

TEST_P(Loader, InitialisesAFunctionStaticOnce) { EXPECT_EQ(function<int()>("probe_static_guard")(), 4242); }

TEST_P(Loader, CatchesInsideAndUnwindsEveryFrame)
{
    EXPECT_EQ(function<int(int)>("probe_catch_inside")(9), 10);
    EXPECT_EQ(function<int()>("probe_catch_through_large_frame")(), 1);
}

TEST_P(Loader, CallsTheHostBack)
{
    int unwound = 0;
    // 8, and for each depth d: (3 * 5 + 7 * 11) d d + 13 d
    EXPECT_EQ(function<int(int (*)(int), int, int*)>("probe_call_host")(host_leaf, 3, &unwound), 8 + 92 * 14 + 13 * 6);
    EXPECT_EQ(unwound, 4);
}

TEST_P(Loader, LetsAnExceptionOfTheHostPass)
{
    int unwound = 0;
    auto* const call = function<int(int (*)(int), int, int*)>("probe_call_host");
    EXPECT_THROW(call(host_leaf_that_throws, 5, &unwound), std::length_error);
    EXPECT_EQ(unwound, 6);
}

TEST_P(Loader, LetsAnExceptionOut)
{
    try {
        function<void(char const*)>("probe_throw_out")("text of the module");
        FAIL() << "nothing was thrown";
    } catch (std::invalid_argument const& error) {
        EXPECT_STREQ(error.what(), "text of the module");
    }
}

TEST_P(Loader, RunsThreadsThatWaitForEachOther) { EXPECT_EQ(function<int(int)>("probe_threads")(8), 8); }

TEST_P(Loader, SleepsOnASteadyClock)
{
    auto const slept_ns = function<long long(int)>("probe_slept_ns")(20);
    EXPECT_GE(slept_ns, 20'000'000);
    EXPECT_LT(slept_ns, 2'000'000'000);
}

TEST_P(Loader, GrowsMemory) { EXPECT_EQ(function<int(int)>("probe_grow")(1 << 20), 5); }

TEST_P(Loader, PrintsThroughTheStandardStream)
{
    testing::internal::CaptureStdout();
    function<void(char const*)>("probe_print")("a line");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a line\n");
}

TEST_P(Loader, RecordsCommandsInsteadOfRunningThem)
{
    quillo::macho::take_system_commands();
    EXPECT_EQ(function<int(char const*)>("probe_system")("exit 3"), 0);
    EXPECT_EQ(quillo::macho::take_system_commands(), std::vector<std::string>{"exit 3"});
}

TEST_P(Loader, BuildsTextsAcrossTheBorder)
{
    EXPECT_EQ(function<int(char const*, int)>("probe_formatted")("value", 12),
              static_cast<int>(std::string("value=12 and enough to leave the short form").size()));
}

TEST_P(Loader, FindsInternalSymbols)
{
    EXPECT_EQ(module.exported("__ZN12_GLOBAL__N_16throwsEi"), nullptr);
    EXPECT_NE(module.local("__ZN12_GLOBAL__N_16throwsEi"), nullptr);
    EXPECT_EQ(module.local("_probe_constructed"), module.exported("_probe_constructed"));
}

INSTANTIATE_TEST_SUITE_P(Probe, Loader,
                         testing::Values("probe_O0", "probe_O2", "probe_Os", "probe_no_frame", "probe_no_frame_O0",
                                         "probe_guarded"),
                         [](auto const& instance) { return std::string(instance.param); });

TEST(LoaderRefuses, AnImportThatNothingStandsFor)
{
    auto const without_rand = [](std::string_view library, std::string_view symbol) {
        return symbol == "_rand" ? nullptr : quillo::macho::system_symbol(library, symbol);
    };
    try {
        image const module(path_of("probe_O2"), without_rand);
        FAIL() << "it was loaded";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "Mach-O: nothing stands for _rand of /usr/lib/libSystem.B.dylib");
    }
}

TEST(LoaderRefuses, ThreadLocalVariables)
{
    EXPECT_THROW(image(path_of("probe_thread_local"), quillo::macho::system_symbol), std::runtime_error);
}

TEST(LoaderRefuses, AFileOfAnotherKind)
{
    EXPECT_THROW(image("/proc/self/exe", quillo::macho::system_symbol), std::runtime_error);
    EXPECT_THROW(image("/nonexistent", quillo::macho::system_symbol), std::runtime_error);
}

TEST(LoaderUnloads, AndRunsTheExitHandlers)
{
    for (int i = 0; i < 3; ++i) {
        image const module(path_of("probe_O2"), quillo::macho::system_symbol);
        EXPECT_EQ(function<int()>(module, "probe_constructed")(), 41);
    }
}

} // namespace
