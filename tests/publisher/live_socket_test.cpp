#include "publisher/live_socket.h"

#include "lib/gst/gst_ptr.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <string>

namespace quillo::publisher {
namespace {

class live_socket : public testing::Test
{
  protected:
    bool choose(std::string const& name)
    {
        return ::setsockopt(descriptor(), IPPROTO_TCP, TCP_CONGESTION, name.data(),
                            static_cast<socklen_t>(name.size())) == 0;
    }

    std::string chosen()
    {
        char name[16] = {};
        socklen_t size = sizeof name;
        EXPECT_EQ(::getsockopt(descriptor(), IPPROTO_TCP, TCP_CONGESTION, name, &size), 0);
        return name;
    }

    int descriptor() { return g_socket_get_fd(socket_.get()); }

    object_ptr<GSocket> const socket_ = adopt<object_ptr<GSocket>>(
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr));
};

TEST_F(live_socket, sends_at_once)
{
    make_live(socket_.get());
    gint at_once = 0;
    ASSERT_TRUE(g_socket_get_option(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &at_once, nullptr));
    EXPECT_NE(at_once, 0);
}

TEST_F(live_socket, does_not_keep_to_a_pace_of_before)
{
    if (!choose("bbr"))
        GTEST_SKIP() << "this machine has no BBR, or keeps it to itself";
    make_live(socket_.get());
    EXPECT_EQ(chosen(), "reno");
}

TEST_F(live_socket, any_other_choice_of_the_system_stays)
{
    for (auto const* name : {"reno", "cubic"})
        if (choose(name)) {
            make_live(socket_.get());
            EXPECT_EQ(chosen(), name);
        }
}

} // namespace
} // namespace quillo::publisher
