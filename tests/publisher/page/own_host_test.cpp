#include "publisher/machine.h"
#include "publisher/page/own_host.h"

#include <gmock/gmock.h>

namespace quillo::publisher {
namespace {

TEST(own_host, takes_the_host_out_of_an_authority)
{
    EXPECT_EQ(host_of("localhost"), "localhost");
    EXPECT_EQ(host_of("LocalHost:8580"), "localhost");
    EXPECT_EQ(host_of("127.0.0.1:80"), "127.0.0.1");
    EXPECT_EQ(host_of("[::1]:8580"), "::1");
    EXPECT_EQ(host_of("[fe80::1]"), "fe80::1");
}

TEST(own_host, finds_nothing_in_what_is_malformed)
{
    for (char const* const bad :
         {"", ":8580", "[::1", "[]", "[::1]8580", "localhost:", "localhost:80a", "localhost:123456", "::1", "a:1:2"})
        EXPECT_EQ(host_of(bad), "") << bad;
    EXPECT_EQ(host_of(std::string(300, 'a')), "");
}

TEST(own_host, this_machine_goes_by_its_names_and_the_address_that_was_called)
{
    std::vector<std::string> const names{"localhost", "127.0.0.1", "::1", "studio", "studio.local"};
    for (char const* const good :
         {"localhost:8580", "127.0.0.1", "[::1]:8580", "studio:8580", "STUDIO.local", "192.168.1.7:8580"})
        EXPECT_TRUE(is_own_host(good, names, "192.168.1.7")) << good;
    for (char const* const bad : {"example.com", "localhost.example.com", "192.168.1.8", "studio.example.com", "",
                                  "127.0.0.1.", "localhost, example.com"})
        EXPECT_FALSE(is_own_host(bad, names, "192.168.1.7")) << bad;
}

TEST(own_host, own_names_have_the_machines_own)
{
    EXPECT_THAT(own_names(),
                ::testing::IsSupersetOf({std::string{"localhost"}, std::string{"127.0.0.1"}, std::string{"::1"}}));
    EXPECT_TRUE(is_own_host(machine_name() + ":8580", own_names(), "127.0.0.1"));
}

TEST(own_host, a_page_of_ours_has_the_same_host_and_port)
{
    EXPECT_TRUE(is_own_origin("http://localhost:8580", "localhost:8580"));
    EXPECT_TRUE(is_own_origin("https://Studio:8580", "studio:8580"));
    EXPECT_FALSE(is_own_origin("http://localhost:3000", "localhost:8580"));
    EXPECT_FALSE(is_own_origin("http://example.com", "localhost:8580"));
    EXPECT_FALSE(is_own_origin("null", "localhost:8580"));
    EXPECT_FALSE(is_own_origin("file://", "localhost:8580"));
}

} // namespace
} // namespace quillo::publisher
