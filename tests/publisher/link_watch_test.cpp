// What the kernel tells of interfaces, message by message and live.
#include "publisher/link_watch.h"
#include "tests/support/live_sender.h"
#include "tests/support/rtsp_receiver.h"
#include "tests/support/running_publisher.h"
#include "tests/support/soon.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace quillo::publisher {
namespace {

using namespace quillo::testing;

constexpr unsigned up = IFF_UP | IFF_RUNNING;
constexpr unsigned unplugged = IFF_UP;

std::vector<std::byte> link_message(int index, unsigned flags, int type = RTM_NEWLINK)
{
    // An attribute stands behind, as always.
    std::vector<std::byte> bytes(NLMSG_ALIGN(NLMSG_LENGTH(sizeof(ifinfomsg)) + 7));
    nlmsghdr header{};
    header.nlmsg_len = static_cast<unsigned>(NLMSG_LENGTH(sizeof(ifinfomsg)) + 7);
    header.nlmsg_type = static_cast<unsigned short>(type);
    ifinfomsg link{};
    link.ifi_index = index;
    link.ifi_flags = flags;
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(bytes.data() + NLMSG_HDRLEN, &link, sizeof link);
    return bytes;
}

std::vector<std::byte> operator+(std::vector<std::byte> one, std::vector<std::byte> const& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

TEST(idle_links, link_is_back_once_after_it_was_unplugged)
{
    idle_links links;
    EXPECT_FALSE(links.take(link_message(2, unplugged)));
    EXPECT_FALSE(links.take(link_message(2, unplugged)));
    EXPECT_TRUE(links.take(link_message(2, up)));
    EXPECT_FALSE(links.take(link_message(2, up)));
}

TEST(idle_links, news_of_links_that_were_never_away_mean_nothing)
{
    idle_links links;
    EXPECT_FALSE(links.take(link_message(2, up)));
    EXPECT_FALSE(links.take(link_message(3, unplugged)));
    EXPECT_FALSE(links.take(link_message(2, up)));
}

TEST(idle_links, several_messages_of_a_datagram_count)
{
    idle_links links;
    EXPECT_TRUE(links.take(link_message(2, unplugged) + link_message(2, up)));
    EXPECT_TRUE(links.take(link_message(2, unplugged) + link_message(2, up) + link_message(3, unplugged)));
    EXPECT_TRUE(links.take(link_message(3, up)));
}

TEST(idle_links, link_that_was_removed_is_not_back_with_a_new_one_of_its_number)
{
    idle_links links;
    EXPECT_FALSE(links.take(link_message(2, unplugged) + link_message(2, 0, RTM_DELLINK)));
    EXPECT_FALSE(links.take(link_message(2, up)));
}

TEST(idle_links, other_messages_and_broken_ones_are_passed_over)
{
    idle_links links;
    ASSERT_FALSE(links.take(link_message(2, unplugged)));
    EXPECT_FALSE(links.take(link_message(2, up, RTM_NEWADDR)));
    auto const whole = link_message(2, up);
    for (std::size_t size = 0; size + 1 < whole.size(); ++size)
        EXPECT_FALSE(links.take({whole.data(), size})) << size;
    auto endless = whole;
    std::memset(endless.data(), 0, sizeof(nlmsghdr::nlmsg_len));
    EXPECT_FALSE(links.take(endless));
    EXPECT_TRUE(links.take(link_message(2, up, RTM_NEWADDR) + whole));
}

// Only loopback is in a new network namespace, and at first it is down.
void set_loopback(bool running)
{
    open::descriptor const any{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = running ? IFF_UP | IFF_RUNNING : 0;
    ASSERT_EQ(::ioctl(any.get(), SIOCSIFFLAGS, &request), 0);
}

TEST(link_watch, hears_from_the_kernel_of_a_link_that_is_back)
{
    std::thread{[] {
        if (::unshare(CLONE_NEWNET) != 0)
            GTEST_SKIP() << "no network namespace may be made here";
        context_ptr const context{g_main_context_new()};
        int back = 0;
        link_watch const watch{context.get(), [&] { ++back; }};
        auto const listen = [&] {
            while (g_main_context_iteration(context.get(), FALSE)) {
            }
        };
        set_loopback(true);
        listen();
        EXPECT_EQ(back, 0);
        set_loopback(false);
        listen();
        EXPECT_EQ(back, 0);
        set_loopback(true);
        listen();
        EXPECT_EQ(back, 1);
    }}.join();
}

// Of a pair of interfaces each is the other's cable.
TEST(link_watch, receivers_hear_at_once_how_sound_and_picture_belong_together)
{
    std::thread{[] {
        if (::unshare(CLONE_NEWNET) != 0)
            GTEST_SKIP() << "no network namespace may be made here";
        set_loopback(true);
        ASSERT_EQ(
            std::system("ip link add one type veth peer name other && ip link set one up && ip link set other up"), 0);
        running_publisher publisher;
        live_sender const sender{publisher.socket(), "Source", 1, video_format(320, 180, SenderFourCC_UYVY, 50, 1),
                                 of_luma(90)};
        rtsp_receiver receiver{publisher.url("/source"), rtsp_receiver::over::udp, rtsp_receiver::decode::h264};
        receiver.start();
        ASSERT_TRUE(receiver.wait_for_picture());
        ASSERT_TRUE(soon([&] { return receiver.sender_reports() > 0; }));
        auto const before = receiver.sender_reports();
        ASSERT_EQ(std::system("ip link set other down && ip link set other up"), 0);
        // Each 0.5 s, where each 5 s is usual.
        EXPECT_TRUE(soon([&] { return receiver.sender_reports() >= before + 4; }, 3s));
    }}.join();
}

} // namespace
} // namespace quillo::publisher
