// The publisher comes late, goes, hangs, talks nonsense: the host's calls keep their rhythm, and the source comes back.
#include "sender/open/runtime_folder.h"
#include "tests/sender/open/sender_fixture.h"

#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <optional>
#include <random>
#include <thread>

namespace quillo::test {

using record = fake_publisher::record;

namespace {

class connection : public sender_test
{
  protected:
    // No call of the host's may take this long, whatever happens; the limit leaves room for a loaded machine.
    static constexpr std::chrono::milliseconds never{1000};

    static void play(sender_ptr const& sender, test_frame const& frame, int frames)
    {
        std::vector<float> const samples(2 * 480);
        SenderAudioFrame const block{48000, 2, 480, 0, samples.data(), 480 * 4};
        for (int count = 0; count < frames; ++count)
            EXPECT_LT(milliseconds_of([&] {
                          Quillolib_send_send_video(sender.get(), nullptr);
                          Quillolib_send_send_video_async(sender.get(), &frame.record);
                          Quillolib_send_send_audio(sender.get(), &block);
                      }),
                      never);
    }

    test_frame const frame{64, 36, SenderFourCC_UYVY};
};

std::atomic<int> broken_pipes{0};

bool shows(fake_publisher& publisher, test_frame const& frame, std::chrono::milliseconds limit = 10s)
{
    return publisher.wait_until(
        [&](record const& seen) { return !seen.pictures.empty() && seen.pictures.back().bytes == frame.tight; }, limit);
}

} // namespace

TEST_F(connection, IsMadeWhenThePublisherComesLater)
{
    auto const sender = make_sender();
    play(sender, frame, 50);
    fake_publisher publisher{folder.path(), {.want_video = true}};
    EXPECT_TRUE(shows(publisher, frame, 2s));
    auto const seen = publisher.seen();
    EXPECT_EQ(seen.name, "Adobe Premiere Pro");
    EXPECT_EQ(seen.groups, "");
    EXPECT_EQ(seen.hellos[0].version, protocol::version);
    EXPECT_EQ(seen.hellos[0].pid, static_cast<std::uint32_t>(::getpid()));
}

TEST_F(connection, ComesBackAsTheSameSource)
{
    auto const sender = make_sender();
    std::vector<protocol::hello_body> hellos;
    for (int life = 0; life < 4; ++life) {
        fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
        play(sender, frame, 20);
        ASSERT_TRUE(shows(publisher, frame, 2s)) << "life " << life;
        hellos.push_back(publisher.seen().hellos[0]);
        EXPECT_EQ(publisher.seen().violations, std::vector<std::string>{});
    }
    for (auto const& hello : hellos)
        EXPECT_TRUE(std::equal(hello.sender_id, hello.sender_id + 16, hellos[0].sender_id));
    auto const other = make_sender();
    fake_publisher publisher{folder.path()};
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return seen.hellos.size() >= 2; }));
    auto const both = publisher.seen().hellos;
    EXPECT_FALSE(std::equal(both[0].sender_id, both[0].sender_id + 16, both[1].sender_id));
}

TEST_F(connection, ShowsThePictureHeldToAPublisherThatIsBack)
{
    auto const sender = make_sender();
    std::optional<fake_publisher> publisher;
    publisher.emplace(folder.path(), fake_publisher::behaviour{.want_video = true});
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    ASSERT_TRUE(shows(*publisher, frame));
    publisher.reset();
    publisher.emplace(folder.path(), fake_publisher::behaviour{.want_video = true});
    ASSERT_TRUE(shows(*publisher, frame, 2s));
    EXPECT_EQ(publisher->seen().pictures.back().head.repeat, 1u);
}

TEST_F(connection, SurvivesHangingUpAtAnyMoment)
{
    std::signal(SIGPIPE, [](int) { ++broken_pipes; });
    fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
    auto const sender = make_sender();
    for (int round = 0; round < 7; ++round) {
        ASSERT_TRUE(publisher.wait_until([&](record const& seen) { return seen.connections > round; }));
        play(sender, frame, round * 10);
        publisher.hang_up();
        play(sender, frame, round * 10);
    }
    publisher.forget_pictures();
    EXPECT_TRUE(shows(publisher, frame, 5s));
    EXPECT_EQ(broken_pipes, 0) << "the host is not bothered with SIGPIPE";
    std::signal(SIGPIPE, SIG_DFL);
}

TEST_F(connection, ThatIsNeverReadFromCostsFramesButNoTime)
{
    fake_publisher publisher{folder.path(), {.want_video = true, .want_audio = true}};
    auto const sender = make_sender();
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    ASSERT_TRUE(shows(publisher, frame));
    publisher.behave([](auto& how) { how.read = false; });
    play(sender, frame, 3000);
    publisher.behave([](auto& how) { how.read = true; });
    publisher.forget_pictures();
    test_frame const last{64, 36, SenderFourCC_UYVY, 0, 9};
    Quillolib_send_send_video_async(sender.get(), &last.record);
    EXPECT_TRUE(shows(publisher, last));
    ASSERT_TRUE(
        publisher.wait_until([](record const& seen) { return seen.losses && seen.losses->video_sends == 3002; }));
    auto const losses = *publisher.seen().losses;
    EXPECT_GT(losses.audio_no_room, 0u);
    EXPECT_GT(losses.video_no_slot, 0u);
    EXPECT_EQ(publisher.seen().connections, 1) << "a publisher that sleeps is waited for";
    EXPECT_EQ(publisher.seen().violations, std::vector<std::string>{});
}

TEST_F(connection, EndsWhenThePublisherTalksNonsense)
{
    std::mt19937 random{20240501};
    for (int kind = 0; kind < 8; ++kind) {
        fake_publisher::behaviour rude{.want_video = true};
        protocol::header head{protocol::magic, protocol::message::wants, 8, 0};
        switch (kind) {
        case 0:
            head.magic = 0;
            break;
        case 1:
            head.size = 7;
            break;
        case 2:
            head.size = 0xFFFFFFFF;
            break;
        case 3:
            head.type = protocol::message::hello;
            break;
        case 4:
            head.type = static_cast<protocol::message>(0xFFFFFFFF);
            break;
        case 5:
            head.type = protocol::message::status;
            break;
        default:
            break;
        }
        if (kind < 6) {
            rude.noise = bytes_of(head);
            rude.noise.resize(4096);
        } else {
            rude.noise.resize(5000);
            for (auto& byte : rude.noise)
                byte = static_cast<std::byte>(random());
        }
        fake_publisher publisher{folder.path(), rude};
        auto const sender = make_sender();
        EXPECT_TRUE(publisher.wait_until([](record const& seen) { return seen.connections >= 2; })) << kind;
        play(sender, frame, 20);
        publisher.behave([](auto& how) { how.noise.clear(); });
        EXPECT_TRUE(shows(publisher, frame, 3s)) << kind;
    }
}

TEST_F(connection, IsTriedLessAndLessOftenWithAPublisherOfAnotherVersion)
{
    fake_publisher publisher{folder.path(), {.version = protocol::version + 1}};
    auto const sender = make_sender();
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return seen.connections >= 1; }));
    EXPECT_FALSE(publisher.wait_until([](record const& seen) { return seen.connections > 12; }, 1s));
}

TEST_F(connection, TakesMessagesInPieces)
{
    fake_publisher publisher{folder.path(), {.greet = false}};
    auto const sender = make_sender();
    Quillolib_send_send_video_async(sender.get(), &frame.record);
    ASSERT_TRUE(publisher.wait_until([](record const& seen) { return !seen.hellos.empty(); }));
    auto whole = bytes_of(protocol::header{protocol::magic, protocol::message::welcome, 8, 0});
    for (auto const& part : {bytes_of(protocol::welcome_body{protocol::version, 1}),
                             bytes_of(protocol::header{protocol::magic, protocol::message::wants, 8, 0}),
                             bytes_of(protocol::wants_body{1, 0})})
        whole.insert(whole.end(), part.begin(), part.end());
    for (auto const byte : whole)
        publisher.send_bytes({byte});
    EXPECT_TRUE(shows(publisher, frame));
}

TEST_F(connection, IsNotMadeThroughAFolderThatIsOpenToOthers)
{
    fake_publisher publisher{folder.path(), {.want_video = true}};
    ::chmod(folder.path().c_str(), 0755);
    auto const sender = make_sender();
    play(sender, frame, 10);
    EXPECT_FALSE(publisher.wait_until([](record const& seen) { return seen.connections > 0; }, 300ms));
    ::chmod(folder.path().c_str(), 0700);
    EXPECT_TRUE(shows(publisher, frame, 2s));
}

TEST_F(connection, PathTooLongForASocketIsSurvived)
{
    ::setenv("QUILLO_RUNTIME_DIR", (folder.path() + "/" + std::string(120, 'x')).c_str(), 1);
    auto const sender = make_sender();
    play(sender, frame, 10);
}

TEST(runtime_folder, IsThatOfTheEnvironment)
{
    ::setenv("QUILLO_RUNTIME_DIR", "/somewhere", 1);
    ::setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
    EXPECT_EQ(open::runtime_folder(), "/somewhere");
    EXPECT_EQ(open::socket_path("/somewhere"), "/somewhere/publisher.sock");
    ::setenv("QUILLO_RUNTIME_DIR", "", 1);
    EXPECT_EQ(open::runtime_folder(), "/run/user/7/quillo");
    ::unsetenv("QUILLO_RUNTIME_DIR");
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(open::runtime_folder(), "/tmp/quillo-" + std::to_string(::getuid()));
}

TEST(runtime_folder, MustBelongToTheUserAlone)
{
    private_folder const folder;
    std::string problem;
    auto const fresh = folder.path() + "/fresh";
    EXPECT_TRUE(open::make_private_folder(fresh, problem)) << problem;
    EXPECT_TRUE(open::make_private_folder(fresh, problem)) << "again";
    EXPECT_TRUE(problem.empty());

    auto const refused = [](std::string const& path) {
        std::string why;
        bool const made = open::make_private_folder(path, why);
        return !made && !why.empty();
    };
    auto const link = folder.path() + "/link";
    std::filesystem::create_directory_symlink(fresh, link);
    EXPECT_TRUE(refused(link));
    std::filesystem::permissions(fresh, std::filesystem::perms{0710});
    EXPECT_TRUE(refused(fresh));
    EXPECT_TRUE(refused("/nowhere/to/be/found"));
    EXPECT_TRUE(refused("/dev/null"));
    if (::getuid() == 0) {
        auto const foreign = folder.path() + "/foreign";
        ASSERT_EQ(::mkdir(foreign.c_str(), 0700), 0);
        ASSERT_EQ(::chown(foreign.c_str(), 12345, 12345), 0);
        EXPECT_TRUE(refused(foreign));
    }
}

} // namespace quillo::test
