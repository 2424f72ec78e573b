// Which addresses may come in.
#include "publisher/doors/address_rules.h"

#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

TEST(address_rules, near_is_this_machine_the_private_networks_and_links_without_a_router)
{
    address_rules const near;
    for (char const* const address : {"127.0.0.1", "127.255.255.254", "::1", "10.0.0.1", "10.255.255.255", "172.16.0.1",
                                      "172.31.255.255", "192.168.0.1", "192.168.255.255", "169.254.1.1", "fe80::1",
                                      "febf::1", "fc00::1", "fdff:1:2::3", "::ffff:192.168.1.1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(near.allow(std::string{address})) << address;
}

TEST(address_rules, the_world_is_not_near)
{
    address_rules const near;
    for (char const* const address : {"203.0.113.5",
                                      "8.8.8.8",
                                      "9.255.255.255",
                                      "11.0.0.0",
                                      "172.15.255.255",
                                      "172.32.0.0",
                                      "192.167.255.255",
                                      "192.169.0.0",
                                      "169.253.255.255",
                                      "100.64.0.1",
                                      "0.0.0.0",
                                      "255.255.255.255",
                                      "224.0.0.1",
                                      "2001:db8::1",
                                      "fec0::1",
                                      "fbff::1",
                                      "fe00::1",
                                      "::",
                                      "::2",
                                      "::ffff:203.0.113.5",
                                      "::192.168.1.1",
                                      "64:ff9b::c0a8:101",
                                      "2002:c0a8:101::1",
                                      "",
                                      "localhost",
                                      "192.168.1",
                                      "192.168.1.1 "})
        EXPECT_FALSE(near.allow(std::string{address})) << address;
}

TEST(address_rules, lists_are_taken_word_by_word)
{
    auto const some = address_rules::parse("loopback, 203.0.113.0/24,2001:db8::/32 , 198.51.100.7");
    ASSERT_TRUE(some);
    for (char const* const address :
         {"127.0.0.1", "203.0.113.255", "::ffff:203.0.113.1", "2001:db8:ffff::1", "198.51.100.7"})
        EXPECT_TRUE(some->allow(std::string{address})) << address;
    for (char const* const address : {"192.168.0.1", "203.0.114.0", "2001:db9::1", "198.51.100.8"})
        EXPECT_FALSE(some->allow(std::string{address})) << address;
}

TEST(address_rules, any_is_everybody)
{
    auto const any = address_rules::parse("any");
    ASSERT_TRUE(any);
    for (char const* const address : {"203.0.113.5", "2001:db8::1", "127.0.0.1"})
        EXPECT_TRUE(any->allow(std::string{address})) << address;
}

TEST(address_rules, nonsense_is_no_list)
{
    for (char const* const list : {"", " ", ",", "near,", ",near", "nearby", "10.0.0.0/33", "10.0.0.1/8", "10.0.0.0/-1",
                                   "fd00::/129", "10.0.0", "near near", "*"})
        EXPECT_FALSE(address_rules::parse(list)) << list;
}

} // namespace
} // namespace quillo::publisher
