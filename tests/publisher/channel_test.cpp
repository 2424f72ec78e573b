// A connection whose other end keeps the rules, breaks them one by one, or sends rubbish.
#include "publisher/channel.h"
#include "tests/support/live_sender.h"
#include "tests/support/protocol_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>

namespace quillo::publisher {
namespace {

using ::testing::HasSubstr;
using testing::noise_picture;
using testing::picture_memory;
using testing::protocol_sender;
using testing::video_format;
using type = protocol::message;
using namespace std::chrono_literals;

struct recorder : channel_events
{
    void video_format(protocol::video_format_body const& format) override { formats.push_back(format); }
    void audio_format(sound_format const& format) override { sound_formats.push_back(format); }
    void video(video_item const& item) override
    {
        auto const* const data = item.picture.data;
        pictures.emplace_back(data, data + slot_bytes(item.picture.format));
        timecodes.push_back(item.timecode_100ns);
        if (keeps)
            loans.push_back(item.picture.loan);
    }
    void audio(audio_item const& item) override
    {
        if (item.planar)
            samples.assign(item.planar, item.planar + item.samples * item.format.channels);
        ++blocks;
    }
    void losses(protocol::losses_body const& totals) override { last_losses = totals; }

    std::vector<protocol::video_format_body> formats;
    std::vector<sound_format> sound_formats;
    std::vector<std::vector<unsigned char>> pictures;
    std::vector<std::int64_t> timecodes;
    bool keeps = false; // the loans of pictures
    std::vector<std::shared_ptr<void const>> loans;
    std::vector<float> samples;
    int blocks = 0;
    protocol::losses_body last_losses{};
};

class connection : public ::testing::Test, public channel_directory
{
  protected:
    connection() : peer_{make_pair()}, channel_{std::move(ours_), *this, [this] { ++woken; }} {}

    std::shared_ptr<channel_events> open_source(introduction const& who) override
    {
        introduced = who;
        return full ? nullptr : events;
    }
    std::string status() override { return "{}"; }

    open::descriptor make_pair()
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error{"no sockets"};
        ours_ = open::descriptor{ends[0]};
        return open::descriptor{ends[1]};
    }

    // All that has been sent; a descriptor on the way ends a read.
    void take() { take(channel_); }
    static void take(channel& from)
    {
        for (pollfd waiting{from.fd(), POLLIN, 0}; ::poll(&waiting, 1, 0) > 0;)
            from.receive();
    }

    // What the log would say about what was sent.
    std::string complaint()
    {
        try {
            take();
        } catch (protocol_error const& error) {
            return error.what();
        }
        return {};
    }

    void greet()
    {
        peer_.hello("Adobe Premiere Pro", 7);
        take();
    }

    open::descriptor ours_;
    protocol_sender peer_;
    channel channel_;
    std::shared_ptr<recorder> events = std::make_shared<recorder>();
    introduction introduced{};
    std::atomic<int> woken{0};
    bool full = false;
};

auto const small = video_format(16, 8, SenderFourCC_UYVY);

TEST_F(connection, hello_is_welcomed)
{
    greet();
    EXPECT_EQ(introduced.name, "Adobe Premiere Pro");
    EXPECT_EQ(introduced.id[0], 7);
    EXPECT_TRUE(peer_.receive(type::welcome));
}

TEST_F(connection, pictures_come_out_of_their_slots_and_slots_go_back)
{
    greet();
    auto const picture = noise_picture(small, 1);
    peer_.announce(small);
    peer_.video(small, picture, 42);
    take();
    ASSERT_EQ(events->pictures.size(), 1u);
    EXPECT_EQ(events->pictures[0], picture);
    EXPECT_EQ(events->timecodes[0], 42);
    EXPECT_EQ(events->formats.size(), 1u);
    EXPECT_TRUE(peer_.wait_for_release());
}

TEST_F(connection, a_slot_goes_back_when_the_last_holder_of_its_picture_is_gone)
{
    greet();
    events->keeps = true;
    peer_.video(small, noise_picture(small, 1), 42);
    take();
    ASSERT_EQ(events->loans.size(), 1u);
    auto second_holder = events->loans[0];
    events->loans.clear();
    EXPECT_FALSE(peer_.wait_for_release(50ms));
    int const before = woken;
    std::thread{[&] { second_holder.reset(); }}.join();
    EXPECT_GT(woken, before);
    EXPECT_TRUE(channel_.give_slots_back());
    EXPECT_TRUE(peer_.wait_for_release());
    EXPECT_FALSE(peer_.wait_for_release(50ms)) << "once is enough";
}

// Whoever holds pictures for long must not keep the sender from going on.
TEST_F(connection, eight_slots_are_always_left_to_the_sender)
{
    greet();
    events->keeps = true;
    for (std::uint64_t number = 0; number < 8; ++number) {
        peer_.video(small, noise_picture(small, number), 0);
        take();
        bool const lent = number < peer_.pool.slots - 8;
        EXPECT_EQ(events->loans.back() != nullptr, lent) << number;
        EXPECT_EQ(peer_.wait_for_release(lent ? 50ms : 3000ms), !lent) << number;
    }
    events->loans.clear();
    EXPECT_TRUE(channel_.give_slots_back());
    for (std::uint32_t slot = 0; slot < peer_.pool.slots - 8; ++slot)
        EXPECT_TRUE(peer_.wait_for_release());
    peer_.video(small, noise_picture(small, 8), 0);
    take();
    EXPECT_NE(events->loans.back(), nullptr) << "what came back can be lent again";
}

TEST_F(connection, a_lent_picture_outlives_its_pool_and_its_connection)
{
    struct keeper : recorder
    {
        void video(video_item const& item) override { kept = item.picture; }
        sent_picture kept{};
    };
    auto const by = std::make_shared<keeper>();
    events = by;
    auto const picture = noise_picture(small, 1);
    {
        protocol_sender peer{make_pair()};
        channel short_lived{std::move(ours_), *this, [] {}};
        peer.hello("Adobe Premiere Pro", 7);
        peer.video(small, picture, 0);
        take(short_lived);
        peer.make_pool(8192);
        take(short_lived);
    }
    ASSERT_NE(by->kept.loan, nullptr);
    EXPECT_EQ(std::memcmp(by->kept.data, picture.data(), picture.size()), 0);
    by->kept.loan.reset();
}

TEST_F(connection, pictures_of_a_pool_that_was_replaced_are_only_given_back)
{
    greet();
    peer_.make_pool(4096);
    peer_.send_record(type::video, protocol::video_body{small, peer_.pool.pool_id - 1, 0, 0, 0, 0, 0, 0});
    take();
    EXPECT_TRUE(events->pictures.empty());
    EXPECT_TRUE(peer_.wait_for_release());
}

TEST_F(connection, sound_comes_out_as_it_went_in)
{
    greet();
    std::vector<float> const planar{1.0f, 2.0f, 3.0f, 4.0f};
    peer_.audio({48000, 2}, planar, 1);
    take();
    EXPECT_EQ(events->samples, planar);
    peer_.silence({48000, 2}, 480);
    take();
    EXPECT_EQ(events->blocks, 2);
}

TEST_F(connection, messages_in_pieces_are_put_together)
{
    protocol::header const head{protocol::magic, type::hello, sizeof(protocol::hello_body) + 2, 0};
    protocol::hello_body body{};
    body.version = protocol::version;
    body.name_size = 2;
    std::vector<std::byte> bytes(sizeof head + sizeof body + 2, std::byte{'x'});
    std::memcpy(bytes.data(), &head, sizeof head);
    std::memcpy(bytes.data() + sizeof head, &body, sizeof body);
    for (auto const& byte : bytes) {
        EXPECT_TRUE(introduced.name.empty());
        peer_.send_bytes({&byte, 1});
        take();
    }
    EXPECT_EQ(introduced.name, "xx");
}

TEST_F(connection, status_needs_no_hello)
{
    peer_.send(type::status_request, {});
    take();
    auto const got = peer_.receive(type::status);
    ASSERT_TRUE(got);
    EXPECT_EQ(got->body.size(), 2u);
}

TEST_F(connection, end_of_the_peer_is_noticed)
{
    peer_.hang_up();
    EXPECT_FALSE(channel_.receive());
}

TEST_F(connection, losses_are_handed_on)
{
    greet();
    protocol::losses_body losses{};
    losses.video_replaced = 9;
    peer_.send_record(type::losses, losses);
    take();
    EXPECT_EQ(events->last_losses, losses);
}

TEST_F(connection, rubbish_is_refused)
{
    std::vector<std::byte> const rubbish(64, std::byte{0x5A});
    peer_.send_bytes(rubbish);
    EXPECT_THAT(complaint(), HasSubstr("no message"));
}

TEST_F(connection, body_beyond_the_limit_is_refused_before_it_comes)
{
    protocol::header const head{protocol::magic, type::hello, protocol::max_body + 1, 0};
    peer_.send_bytes(std::as_bytes(std::span{&head, 1}));
    EXPECT_THAT(complaint(), HasSubstr("no message"));
}

TEST_F(connection, nothing_goes_before_hello)
{
    peer_.announce(small);
    EXPECT_THAT(complaint(), HasSubstr("no hello"));
}

TEST_F(connection, second_hello_is_refused)
{
    greet();
    peer_.hello("again", 8);
    EXPECT_THAT(complaint(), HasSubstr("second hello"));
}

TEST_F(connection, hello_that_lies_about_its_sizes_is_refused)
{
    protocol::hello_body body{};
    body.version = protocol::version;
    for (auto const& [name, groups] :
         {std::pair<std::uint32_t, std::uint32_t>{200, 0}, {0, 1}, {255, 0xFFFFFFFF}, {0xFFFFFFFF, 1}, {256, 0}}) {
        body.name_size = name;
        body.groups_size = groups;
        peer_.send_record(type::hello, body);
        EXPECT_NE(complaint(), "") << name << ' ' << groups;
    }
    EXPECT_EQ(introduced.name, "");
}

TEST_F(connection, hello_of_another_version_is_refused)
{
    protocol::hello_body body{};
    body.version = protocol::version + 1;
    peer_.send_record(type::hello, body);
    EXPECT_THAT(complaint(), HasSubstr("version"));
}

TEST_F(connection, more_sources_than_allowed_are_refused)
{
    full = true;
    peer_.hello("one too many", 1);
    EXPECT_THAT(complaint(), HasSubstr("too many"));
}

TEST_F(connection, bodies_of_the_wrong_size_are_refused)
{
    greet();
    std::vector<std::byte> const body(200);
    for (auto const kind : {type::video_format, type::audio_format, type::pool, type::video, type::losses})
        for (std::size_t const size : {0, 1, 7, 200}) {
            peer_.send(kind, std::span{body}.first(size));
            EXPECT_NE(complaint(), "") << static_cast<int>(kind) << ' ' << size;
        }
}

TEST_F(connection, unknown_messages_and_those_of_a_publisher_are_refused)
{
    greet();
    for (auto const kind :
         {type::welcome, type::wants, type::release, type::status, static_cast<type>(0), static_cast<type>(99)}) {
        peer_.send(kind, {});
        EXPECT_THAT(complaint(), HasSubstr("unknown"));
    }
}

TEST_F(connection, pool_without_memory_is_refused)
{
    greet();
    peer_.send_record(type::pool, protocol::pool_body{1, 4, 4096});
    EXPECT_THAT(complaint(), HasSubstr("no memory"));
}

TEST_F(connection, pool_larger_than_its_memory_is_refused)
{
    greet();
    auto const memory = picture_memory(4 * 4096 - 1);
    peer_.send_record(type::pool, protocol::pool_body{1, 4, 4096}, memory.get());
    EXPECT_THAT(complaint(), HasSubstr("smaller"));
}

TEST_F(connection, pool_that_could_shrink_is_refused)
{
    greet();
    auto const memory = picture_memory(4 * 4096, false);
    peer_.send_record(type::pool, protocol::pool_body{1, 4, 4096}, memory.get());
    EXPECT_THAT(complaint(), HasSubstr("sealed"));
}

TEST_F(connection, pool_of_something_else_than_memory_is_refused)
{
    greet();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    open::descriptor const reading{ends[0]}, writing{ends[1]};
    peer_.send_record(type::pool, protocol::pool_body{1, 4, 4096}, reading.get());
    EXPECT_THAT(complaint(), HasSubstr("no memory"));
}

TEST_F(connection, pools_out_of_range_are_refused)
{
    greet();
    auto const memory = picture_memory(4 * 4096);
    for (auto const& pool : {protocol::pool_body{1, 0, 4096},
                             {1, 17, 4096},
                             {1, 1, 0},
                             {1, 1, 4095},
                             {1, 1, 6000},
                             {1, 8, (1ull << 30) + 4096},
                             {1, 2, 1ull << 63}}) {
        peer_.send_record(type::pool, pool, memory.get());
        EXPECT_THAT(complaint(), HasSubstr("out of range")) << pool.slots << ' ' << pool.slot_bytes;
    }
}

TEST_F(connection, pictures_outside_of_their_slot_are_refused)
{
    greet();
    peer_.make_pool(4096);
    take();
    auto const id = peer_.pool.pool_id;
    peer_.send_record(type::video, protocol::video_body{small, id, peer_.pool.slots, 0, 0, 0, 0, 0});
    EXPECT_THAT(complaint(), HasSubstr("slot"));
    peer_.send_record(type::video, protocol::video_body{small, id, 0xFFFFFFFF, 0, 0, 0, 0, 0});
    EXPECT_THAT(complaint(), HasSubstr("slot"));
    // One row too many for the slot.
    peer_.send_record(type::video, protocol::video_body{video_format(64, 33, SenderFourCC_UYVY), id, 0, 0, 0, 0, 0, 0});
    EXPECT_THAT(complaint(), HasSubstr("slot"));
    peer_.send_record(type::video,
                      protocol::video_body{video_format(16384, 16384, SenderFourCC_BGRA), id, 0, 0, 0, 0, 0, 0});
    EXPECT_THAT(complaint(), HasSubstr("slot"));
    EXPECT_TRUE(events->pictures.empty());
}

TEST_F(connection, picture_without_any_pool_is_refused)
{
    greet();
    peer_.send_record(type::video, protocol::video_body{small, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_THAT(complaint(), HasSubstr("slot"));
}

TEST_F(connection, senseless_formats_are_refused)
{
    greet();
    peer_.announce(video_format(0, 0, SenderFourCC_UYVY));
    EXPECT_THAT(complaint(), HasSubstr("video format"));
    peer_.announce(protocol::audio_format_body{48000, 0});
    EXPECT_THAT(complaint(), HasSubstr("audio format"));
}

TEST_F(connection, blocks_that_lie_about_their_size_are_refused)
{
    greet();
    protocol::audio_body body{{48000, 2}, 480, 0, 0, 0, 0};
    peer_.send_record(type::audio, body); // no samples behind it
    EXPECT_THAT(complaint(), HasSubstr("wrong size"));
    body.samples = -1;
    peer_.send_record(type::audio, body);
    EXPECT_THAT(complaint(), HasSubstr("length"));
    body.samples = 1 << 17;
    peer_.send_record(type::audio, body);
    EXPECT_THAT(complaint(), HasSubstr("length"));
    body = {{48000, 2}, 480, 1, 0, 0, 0};
    std::vector<std::byte> too_much(sizeof body + 4);
    std::memcpy(too_much.data(), &body, sizeof body);
    peer_.send(type::audio, too_much);
    EXPECT_THAT(complaint(), HasSubstr("wrong size"));
    EXPECT_EQ(events->blocks, 0);
}

TEST_F(connection, descriptors_that_nobody_asked_for_end_it)
{
    greet();
    auto const memory = picture_memory(4096);
    peer_.send_record(type::losses, protocol::losses_body{}, memory.get());
    take();
    peer_.send_record(type::losses, protocol::losses_body{}, memory.get());
    EXPECT_FALSE(channel_.receive());
}

// Valid messages with some of their bytes changed: whatever comes of it, it is an answer or a refusal.
TEST_F(connection, changed_bytes_never_do_harm)
{
    std::mt19937 random{20240501};
    auto const picture = noise_picture(small, 1);
    for (int round = 0; round < 300; ++round) {
        protocol_sender peer{make_pair()};
        channel taking{std::move(ours_), *this, [] {}};
        peer.hello("fuzz", 1);
        peer.make_pool(4096);
        std::vector<std::byte> bytes;
        auto const add = [&](type kind, auto const& body) {
            protocol::header const head{protocol::magic, kind, sizeof body, 0};
            auto const a = std::as_bytes(std::span{&head, 1}), b = std::as_bytes(std::span{&body, 1});
            bytes.insert(bytes.end(), a.begin(), a.end());
            bytes.insert(bytes.end(), b.begin(), b.end());
        };
        add(type::video_format, small);
        add(type::audio_format, protocol::audio_format_body{48000, 2});
        add(type::video, protocol::video_body{small, peer.pool.pool_id, 1, 0, 0, 0, 0, 0});
        add(type::audio, protocol::audio_body{{48000, 2}, 480, 1, 0, 0, 0});
        add(type::pool, peer.pool);
        for (int k = 0; k < 3; ++k)
            bytes[random() % bytes.size()] = static_cast<std::byte>(random());
        peer.send_bytes(bytes);
        try {
            for (pollfd waiting{taking.fd(), POLLIN, 0}; ::poll(&waiting, 1, 0) > 0;)
                if (!taking.receive())
                    break;
        } catch (protocol_error const&) {
        }
    }
}

} // namespace
} // namespace quillo::publisher
