// The publisher that is started when nobody listens.
#include "sender/open/publisher_starter.h"
#include "tests/sender/open/sender_fixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

namespace quillo::test {

using open::find_publisher;
using open::start_environment;
using open::start_limit;

namespace {

class starter : public sender_test
{
  protected:
    // A program that writes how it was started, all at once, to the file "report" and then ends.
    std::string make_reporter()
    {
        auto const program = folder.path() + "/reporter";
        std::ofstream{program} << "#!/bin/sh\n"
                                  "{ echo \"arguments: $*\"\n"
                                  "  echo \"variable: $QUILLO_TEST_MARK\"\n"
                                  "  echo \"session: $(ps -o pid=,sid=,ppid= -p $$)\"\n"
                                  "  echo descriptors: $(ls /proc/$$/fd)\n"
                                  "  grep -E 'Sig(Blk|Ign)' /proc/self/status\n"
                                  "  echo written to standard output >&1\n"
                               << "} >" << folder.path() << "/report.part 2>&1\n"
                               << "echo message to the log >&2\n"
                               << "mv " << folder.path() << "/report.part " << folder.path() << "/report\n"
                               << "echo x >>" << folder.path() << "/starts\n";
        ::chmod(program.c_str(), 0700);
        return program;
    }

    std::string wait_for_file(std::string const& name, std::string const& content = "")
    {
        auto const path = folder.path() + "/" + name;
        for (auto const end = steady::now() + 10s; steady::now() < end; std::this_thread::sleep_for(5ms)) {
            std::stringstream text;
            text << std::ifstream{path}.rdbuf();
            if (!text.str().empty() && text.str().find(content) != std::string::npos)
                return text.str();
        }
        return {};
    }
};

bool has_children() { return ::waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD; }

} // namespace

TEST_F(starter, StartsAProgramThatOwesUsNothing)
{
    ::setenv("QUILLO_TEST_MARK", "handed on", 1);
    // What a host may have done, and the publisher must not notice.
    int const leaked = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(leaked, 3);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t mask;
    sigset_t before;
    sigemptyset(&mask);
    sigaddset(&mask, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &mask, &before);

    open::start_publisher(make_reporter(), folder.path(), start_environment::of_this_process());

    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    ::close(leaked);
    auto const report = wait_for_file("report");
    EXPECT_NE(report.find("arguments: serve --on-demand\n"), std::string::npos) << report;
    EXPECT_NE(report.find("variable: handed on\n"), std::string::npos) << report;
    EXPECT_NE(report.find("SigBlk:\t0000000000000000\n"), std::string::npos) << report;
    // Interrupt and quit, which the shell leaves ignored for what runs in its background, and the two that the C
    // library keeps for itself.
    std::istringstream ignored{report.substr(report.find("SigIgn:") + 7)};
    std::uint64_t bits = 0;
    ignored >> std::hex >> bits;
    EXPECT_EQ(bits & ~std::uint64_t{0x180000006}, 0u) << report;
    // Nothing but the standard streams and what the program opened itself for its report (10 and up in this shell).
    std::istringstream descriptors{report.substr(report.find("descriptors:") + 12)};
    for (int fd = 0; descriptors >> fd;)
        EXPECT_TRUE(fd <= 3 || fd >= 10) << report;

    std::istringstream session{report.substr(report.find("session:") + 8)};
    long pid = 0;
    long sid = 0;
    long parent = 0;
    session >> pid >> sid >> parent;
    EXPECT_NE(sid, static_cast<long>(::getsid(0))) << "a session of its own";
    EXPECT_NE(parent, static_cast<long>(::getpid())) << "not our child";
    EXPECT_FALSE(has_children());
    EXPECT_NE(wait_for_file("publisher.log", "message to the log"), "");
}

TEST_F(starter, ThrowsWithoutAProgram)
{
    auto const environment = start_environment::of_this_process();
    EXPECT_THROW(open::start_publisher(folder.path() + "/none", folder.path(), environment), std::system_error);
    EXPECT_THROW(open::start_publisher(folder.path(), folder.path(), environment), std::system_error);
}

TEST_F(starter, IsUsedByASenderToWhichNobodyListens)
{
    ::setenv("QUILLO_PUBLISHER", make_reporter().c_str(), 1);
    auto const sender = make_sender();
    EXPECT_NE(wait_for_file("report"), "");
    EXPECT_FALSE(has_children());
    // One start for now, however often the connection is tried.
    fake_publisher publisher{folder.path()};
    EXPECT_TRUE(publisher.wait_until([](auto const& seen) { return !seen.hellos.empty(); }));
    EXPECT_EQ(wait_for_file("starts"), "x\n");
}

TEST_F(starter, IsNotUsedWhenThePublisherListensOrNoneIsWanted)
{
    {
        fake_publisher publisher{folder.path()};
        ::setenv("QUILLO_PUBLISHER", make_reporter().c_str(), 1);
        auto const sender = make_sender();
        ASSERT_TRUE(publisher.wait_until([](auto const& seen) { return !seen.hellos.empty(); }));
    }
    ::setenv("QUILLO_PUBLISHER", "", 1);
    auto const sender = make_sender();
    fake_publisher publisher{folder.path()};
    ASSERT_TRUE(publisher.wait_until([](auto const& seen) { return !seen.hellos.empty(); }));
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "/starts"));
}

TEST(start_environment, FindsItsVariables)
{
    start_environment const environment{{"PATHS=1", "PATH=2", "EMPTY=", "NONSENSE"}};
    EXPECT_STREQ(environment.get("PATH"), "2");
    EXPECT_STREQ(environment.get("EMPTY"), "");
    EXPECT_EQ(environment.get("NONSENSE"), nullptr);
    EXPECT_EQ(environment.get("PAT"), nullptr);
}

TEST_F(starter, FindsTheProgram)
{
    EXPECT_EQ(find_publisher({{"QUILLO_PUBLISHER="}}), std::nullopt);
    EXPECT_EQ(find_publisher({{"QUILLO_PUBLISHER=/a/b"}}), "/a/b");

    auto const place = folder.path() + "/bin";
    std::filesystem::create_directories(place + "/elsewhere/quillo"); // a folder of the name is no program
    std::ofstream{place + "/quillo"} << "#!/bin/sh\n";
    auto const path = "PATH=:/nowhere:" + place + "/elsewhere:" + place + ":";
    EXPECT_EQ(find_publisher({{path}}), std::nullopt) << "not executable";
    ::chmod((place + "/quillo").c_str(), 0700);
    EXPECT_EQ(find_publisher({{path}}), place + "/quillo");
    EXPECT_EQ(find_publisher({{"PATH="}}), std::nullopt);
    EXPECT_EQ(find_publisher({}), std::nullopt);
}

TEST(start_limit, LeavesAFreshPublisherTimeToListen)
{
    start_limit limit;
    steady::time_point const start{100h};
    EXPECT_TRUE(limit.may_start(start));
    limit.started(start);
    EXPECT_FALSE(limit.may_start(start + 2999ms));
    EXPECT_TRUE(limit.may_start(start + 3s));
    // One that never answers is started less and less often.
    auto now = start;
    for (auto const pause : {3s, 6s, 12s, 24s, 30s, 30s, 30s}) {
        now += pause;
        EXPECT_FALSE(limit.may_start(now - 1ms));
        EXPECT_TRUE(limit.may_start(now));
        limit.started(now);
    }
}

TEST(start_limit, ReplacesAPublisherThatIsKilledAtOnce)
{
    start_limit limit;
    steady::time_point now{100h};
    limit.started(now);
    limit.answered(now + 500ms);
    now += 10s;
    limit.lost(now);
    EXPECT_TRUE(limit.may_start(now));
    limit.started(now);
    limit.answered(now + 500ms);
    limit.lost(now + 600ms);
    EXPECT_FALSE(limit.may_start(now + 999ms));
    EXPECT_TRUE(limit.may_start(now + 1s));
}

TEST(start_limit, DoesNotReplaceOneThatDiesAgainAndAgainEverySecond)
{
    start_limit limit;
    steady::time_point now{100h};
    for (auto const pause : {1s, 2s, 4s, 5s, 5s}) {
        limit.started(now);
        limit.answered(now + 100ms);
        limit.lost(now + 200ms);
        EXPECT_FALSE(limit.may_start(now + pause - 1ms));
        EXPECT_TRUE(limit.may_start(now + pause));
        now += pause;
    }
}

TEST(start_limit, StartsAtOnceWhenAPublisherOfAnotherParentIsGone)
{
    start_limit limit;
    steady::time_point const now{100h};
    limit.answered(now);
    limit.lost(now + 1s);
    EXPECT_TRUE(limit.may_start(now + 1s));
}

} // namespace quillo::test
