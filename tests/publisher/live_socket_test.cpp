#include "publisher/live_socket.h"

#include "lib/gst/gst_ptr.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <string>

namespace quillo::publisher {
namespace {

object_ptr<GSocket> tcp_socket()
{
    return adopt<object_ptr<GSocket>>(
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr));
}

std::string chosen(GSocket* socket)
{
    char name[16] = {};
    socklen_t size = sizeof name;
    EXPECT_EQ(::getsockopt(g_socket_get_fd(socket), IPPROTO_TCP, TCP_CONGESTION, name, &size), 0);
    return name;
}

bool sends_at_once(GSocket* socket)
{
    gint at_once = 0;
    EXPECT_TRUE(g_socket_get_option(socket, IPPROTO_TCP, TCP_NODELAY, &at_once, nullptr));
    return at_once != 0;
}

class live_socket : public testing::Test
{
  protected:
    bool choose(std::string const& name)
    {
        return ::setsockopt(g_socket_get_fd(socket_.get()), IPPROTO_TCP, TCP_CONGESTION, name.data(),
                            static_cast<socklen_t>(name.size())) == 0;
    }

    object_ptr<GSocket> const socket_ = tcp_socket();
};

TEST_F(live_socket, sends_at_once)
{
    ASSERT_FALSE(sends_at_once(socket_.get()));
    make_live(socket_.get());
    EXPECT_TRUE(sends_at_once(socket_.get()));
}

TEST_F(live_socket, does_not_keep_to_a_pace_of_before)
{
    if (!choose("bbr"))
        GTEST_SKIP() << "this machine has no BBR, or keeps it to itself";
    make_live(socket_.get());
    EXPECT_EQ(chosen(socket_.get()), "reno");
}

TEST_F(live_socket, any_other_choice_of_the_system_stays)
{
    ASSERT_TRUE(choose("reno"));
    make_live(socket_.get());
    EXPECT_EQ(chosen(socket_.get()), "reno");
    if (choose("cubic")) {
        make_live(socket_.get());
        EXPECT_EQ(chosen(socket_.get()), "cubic");
    }
}

// So the socket that connections come in at is all that has to be made.
TEST_F(live_socket, connections_are_as_the_socket_that_they_come_in_at)
{
    bool const had_bbr = choose("bbr");
    make_live(socket_.get());
    auto const anywhere = adopt<object_ptr<GSocketAddress>>(g_inet_socket_address_new_from_string("127.0.0.1", 0));
    ASSERT_TRUE(g_socket_bind(socket_.get(), anywhere.get(), TRUE, nullptr));
    ASSERT_TRUE(g_socket_listen(socket_.get(), nullptr));
    auto const here = adopt<object_ptr<GSocketAddress>>(g_socket_get_local_address(socket_.get(), nullptr));
    auto const client = tcp_socket();
    ASSERT_TRUE(g_socket_connect(client.get(), here.get(), nullptr, nullptr));
    auto const connection = adopt<object_ptr<GSocket>>(g_socket_accept(socket_.get(), nullptr, nullptr));
    ASSERT_TRUE(connection);
    EXPECT_TRUE(sends_at_once(connection.get()));
    if (had_bbr) {
        EXPECT_EQ(chosen(connection.get()), "reno");
    }
}

} // namespace
} // namespace quillo::publisher
