// A sender's life inside a process that is not ours.
#include "tests/sender/open/sender_fixture.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <random>
#include <thread>

namespace quillo::test {

namespace {

using record = fake_publisher::record;

class lifecycle : public sender_test
{
};

std::size_t entries(char const* folder)
{
    std::size_t count = 0;
    for ([[maybe_unused]] auto const& entry : std::filesystem::directory_iterator{folder})
        ++count;
    return count;
}

// The blocked signals of the sender's thread, as the system tells them.
std::optional<std::uint64_t> blocked_signals()
{
    for (auto const& task : std::filesystem::directory_iterator{"/proc/self/task"}) {
        std::ifstream status{task.path() / "status"};
        std::string word;
        bool ours = false;
        while (status >> word) {
            if (word == "Name:")
                ours = (status >> word) && word == "quillo-sender";
            if (ours && word == "SigBlk:") {
                std::uint64_t bits = 0;
                status >> std::hex >> bits;
                return bits;
            }
        }
    }
    return {};
}

} // namespace

TEST_F(lifecycle, NothingIsDoneForNobody)
{
    EXPECT_EQ(Quillolib_send_create(nullptr), nullptr);
    SenderSettings settings{};
    EXPECT_EQ(Quillolib_send_create(&settings), nullptr) << "no name";
    settings.sourceName = "";
    EXPECT_EQ(Quillolib_send_create(&settings), nullptr);

    test_frame const frame{8, 8, SenderFourCC_BGRX};
    SenderAudioFrame const block{48000, 2, 480, 0, nullptr, 0};
    Quillolib_send_send_video(nullptr, nullptr);
    Quillolib_send_send_video(nullptr, &frame.record);
    Quillolib_send_send_video_async(nullptr, &frame.record);
    Quillolib_send_send_audio(nullptr, &block);
    Quillolib_send_destroy(nullptr);
}

TEST_F(lifecycle, CreatingTakesAMoment)
{
    std::vector<std::chrono::duration<double, std::milli>> times;
    for (int count = 0; count < 9; ++count) {
        sender_ptr sender;
        times.push_back(milliseconds_of([&] { sender = make_sender(); }));
    }
    std::sort(times.begin(), times.end());
    EXPECT_LE(times[times.size() / 2], 20ms);
}

TEST_F(lifecycle, FlushingWithoutAFrameReturnsAtOnce)
{
    auto const sender = make_sender(true, true);
    EXPECT_LT(milliseconds_of([&] {
                  for (int count = 0; count < 1000; ++count)
                      Quillolib_send_send_video(sender.get(), nullptr);
              }),
              1s);
    test_frame frame{8, 8, SenderFourCC_BGRX};
    frame.record.frameRateN = 1; // a frame of a second, due at once
    frame.record.frameRateD = 1;
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    Quillolib_send_send_video(sender.get(), nullptr);
    EXPECT_LT(milliseconds_of([&] {
                  for (int count = 0; count < 1000; ++count)
                      Quillolib_send_send_video(sender.get(), nullptr);
              }),
              900ms)
        << "one of them waited for a frame that was finished";
}

TEST_F(lifecycle, FramesArePacedToTheirRate)
{
    auto const sender = make_sender(true, true);
    test_frame frame{8, 8, SenderFourCC_BGRX};
    frame.record.frameRateN = 50;
    frame.record.frameRateD = 1;
    auto const took = milliseconds_of([&] {
        for (int count = 0; count < 12; ++count) {
            Quillolib_send_send_video(sender.get(), nullptr);
            Quillolib_send_send_video_async(sender.get(), &frame.record);
        }
    });
    // The twelfth frame went when the eleventh was due.
    EXPECT_GE(took, 200ms);
    EXPECT_LT(took, 2s);
    EXPECT_LT(milliseconds_of([&] { Quillolib_send_send_video_async(sender.get(), nullptr); }), 1s);
}

TEST_F(lifecycle, NothingIsPacedUnlessAskedFor)
{
    auto const sender = make_sender(false, false);
    test_frame const frame{8, 8, SenderFourCC_BGRX};
    SenderAudioFrame const block{48000, 2, 480, 0, nullptr, 0};
    EXPECT_LT(milliseconds_of([&] {
                  for (int count = 0; count < 1000; ++count) {
                      Quillolib_send_send_video_async(sender.get(), &frame.record);
                      Quillolib_send_send_audio(sender.get(), &block);
                  }
              }),
              5s)
        << "1000 blocks are 10 s of sound";
}

TEST_F(lifecycle, LeavesNothingBehind)
{
    test_frame const frame{64, 36, SenderFourCC_BGRA};
    auto const round = [&] {
        fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
        auto const sender = make_sender();
        Quillolib_send_send_video_async(sender.get(), &frame.record);
        EXPECT_TRUE(publisher.wait_until([](record const& seen) { return !seen.pictures.empty(); }));
    };
    round();
    auto const descriptors = entries("/proc/self/fd");
    auto const threads = entries("/proc/self/task");
    for (int count = 0; count < 50; ++count)
        round();
    EXPECT_EQ(entries("/proc/self/fd"), descriptors);
    EXPECT_EQ(entries("/proc/self/task"), threads);
}

TEST_F(lifecycle, EndsInTimeWhateverThePublisherDoes)
{
    test_frame const frame{64, 36, SenderFourCC_BGRA};
    std::vector<float> const samples(2 * 480);
    SenderAudioFrame const block{48000, 2, 480, 0, samples.data(), 480 * 4};
    for (bool const reads : {true, false}) {
        fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true, .give_back = reads}};
        auto sender = make_sender();
        Quillolib_send_send_video_async(sender.get(), &frame.record);
        ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.pictures.empty(); }));
        publisher.behave([&](auto& how) { how.read = reads; });
        for (int count = 0; count < 1000; ++count) {
            Quillolib_send_send_video_async(sender.get(), &frame.record);
            Quillolib_send_send_audio(sender.get(), &block);
        }
        EXPECT_LT(milliseconds_of([&] { sender.reset(); }), 2s);
        publisher.behave([](auto& how) { how.read = true; });
        EXPECT_TRUE(publisher.wait_until([](record const& seen) { return !seen.connected; })) << "seen at once";
    }
}

TEST_F(lifecycle, KeepsTheHostsSignalsOffItsThread)
{
    auto const sender = make_sender();
    std::optional<std::uint64_t> bits;
    while (!(bits = blocked_signals()))
        std::this_thread::yield();
    auto const blocked = [&](int signal) { return (*bits >> (signal - 1) & 1) != 0; };
    for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGCHLD, SIGPIPE, SIGALRM, SIGPROF})
        EXPECT_TRUE(blocked(signal)) << signal;
    for (int const fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        EXPECT_FALSE(blocked(fault)) << fault;
    sigset_t here;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &here);
    EXPECT_FALSE(sigismember(&here, SIGINT)) << "the calling thread's are as before";
}

TEST_F(lifecycle, AChildProcessMayCallAndExit)
{
    fake_publisher publisher{folder.path(), {.want_video = true}};
    auto const sender = make_sender(true, true);
    test_frame const frame{64, 36, SenderFourCC_BGRA};
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.pictures.empty(); }));

    auto const child = ::fork();
    if (child == 0) {
        SenderAudioFrame const block{48000, 2, 480, 0, nullptr, 0};
        Quillolib_send_send_video(sender.get(), nullptr);
        Quillolib_send_send_video_async(sender.get(), &frame.record);
        Quillolib_send_send_audio(sender.get(), &block);
        Quillolib_send_destroy(sender.get());
        ::_exit(7);
    }
    ASSERT_GT(child, 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;

    publisher.forget_pictures();
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    EXPECT_TRUE(publisher.wait_until([](record const& seen) { return !seen.pictures.empty(); }))
        << "the parent goes on";
}

TEST_F(lifecycle, TheLibraryMayBeUnloadedUnderALiveSender)
{
    void* const library = ::dlopen(QUILLO_SEND_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    auto* const create = reinterpret_cast<decltype(&Quillolib_send_create)>(::dlsym(library, "Quillolib_send_create"));
    auto* const destroy =
        reinterpret_cast<decltype(&Quillolib_send_destroy)>(::dlsym(library, "Quillolib_send_destroy"));
    SenderSettings const settings{.sourceName = "a", .groups = nullptr, .clockVideo = true, .clockAudio = true};
    auto* const sender = create(&settings);
    ASSERT_NE(sender, nullptr);
    ::dlclose(library);
    fake_publisher publisher{folder.path()};
    EXPECT_TRUE(publisher.wait_until([](record const& seen) { return seen.name == "a"; })) << "its thread lives on";
    destroy(sender);
}

TEST_F(lifecycle, LongNamesAreCutBetweenCharacters)
{
    std::string name;
    for (int count = 0; count < 100; ++count)
        name += "\xE2\x82\xAC"; // a character of three bytes
    fake_publisher publisher{folder.path()};
    SenderSettings const settings{
        .sourceName = name.c_str(), .groups = "public,studio 3", .clockVideo = true, .clockAudio = true};
    sender_ptr const sender{Quillolib_send_create(&settings)};
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.hellos.empty(); }));
    EXPECT_EQ(publisher.seen().name, name.substr(0, 255));
    EXPECT_EQ(publisher.seen().groups, "public,studio 3");
}

TEST_F(lifecycle, AllFunctionsMayBeCalledFromSeveralThreads)
{
    fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
    auto const sender = make_sender(true, true);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 2; ++number) {
        threads.emplace_back([&, number] {
            test_frame const small{64, 36, SenderFourCC_BGRA, 0, number};
            test_frame const big{320, 180, SenderFourCC_UYVA, 0, number};
            std::mt19937 random{number};
            while (!stop) {
                auto& frame = (random() % 8 ? small : big).record;
                auto given = frame;
                given.frameRateN = 1000;
                given.frameRateD = 1;
                if (random() % 20 == 0)
                    given.lineStride = 1;
                switch (random() % 3) {
                case 0:
                    Quillolib_send_send_video(sender.get(), nullptr);
                    break;
                case 1:
                    Quillolib_send_send_video(sender.get(), &given);
                    break;
                default:
                    Quillolib_send_send_video_async(sender.get(), &given);
                }
            }
            Quillolib_send_send_video(sender.get(), nullptr);
        });
        threads.emplace_back([&, number] {
            std::vector<float> const samples(2 * 48);
            while (!stop) {
                SenderAudioFrame const block{48000 - static_cast<int>(number), 2, 48, 0, samples.data(), 48 * 4};
                Quillolib_send_send_audio(sender.get(), &block);
            }
        });
    }
    for (int round = 0; round < 20; ++round) {
        EXPECT_TRUE(publisher.wait_until([&](record const& seen) { return seen.pictures.size() >= 10; }));
        publisher.forget_pictures();
        if (round % 5 == 4)
            publisher.hang_up();
        if (round % 3 == 2)
            publisher.behave([](auto& how) { how.want_video = how.want_audio = false; });
        publisher.behave([](auto& how) { how.want_video = how.want_audio = true; });
    }
    stop = true;
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(publisher.seen().violations, std::vector<std::string>{});
}

} // namespace quillo::test
