// The certificate that the publisher makes for itself.
#include "publisher/doors/certificate.h"
#include "publisher/machine.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quillo::publisher {
namespace {

mode_t mode_of(std::string const& file)
{
    struct stat found
    {
    };
    EXPECT_EQ(::stat(file.c_str(), &found), 0) << file;
    return found.st_mode & 0777;
}

TEST(own_certificate, is_made_once_and_kept)
{
    testing::temporary_folder const folder;
    auto const place = folder.path() + "/deep/down";
    auto const made = fingerprint(own_certificate(place).get());
    EXPECT_THAT(made, ::testing::MatchesRegex("([0-9A-F][0-9A-F]:){31}[0-9A-F][0-9A-F]"));
    EXPECT_EQ(fingerprint(own_certificate(place).get()), made);
    EXPECT_EQ(mode_of(place + "/key.pem"), 0600u);
    testing::temporary_folder const other;
    EXPECT_NE(fingerprint(own_certificate(other.path()).get()), made);
}

TEST(own_certificate, stands_for_this_machine_and_no_other)
{
    testing::temporary_folder const folder;
    auto const made = own_certificate(folder.path());
    auto const verdict = [&](std::string const& name) {
        object_ptr<GSocketConnectable> const host{g_network_address_new(name.c_str(), 8322)};
        return g_tls_certificate_verify(made.get(), host.get(), made.get());
    };
    EXPECT_EQ(verdict("localhost"), G_TLS_CERTIFICATE_NO_FLAGS);
    EXPECT_EQ(verdict(machine_name()), G_TLS_CERTIFICATE_NO_FLAGS);
    EXPECT_EQ(verdict("elsewhere.example"), G_TLS_CERTIFICATE_BAD_IDENTITY);
}

TEST(own_certificate, key_that_others_can_read_is_refused)
{
    testing::temporary_folder const folder;
    own_certificate(folder.path());
    ASSERT_EQ(::chmod((folder.path() + "/key.pem").c_str(), 0644), 0);
    EXPECT_THROW(own_certificate(folder.path()), std::runtime_error);
}

TEST(read_certificate, files_that_are_none_are_named)
{
    testing::temporary_folder const folder;
    try {
        read_certificate(folder.path() + "/no.pem", folder.path() + "/key.pem");
        FAIL();
    } catch (std::runtime_error const& error) {
        EXPECT_THAT(error.what(), ::testing::HasSubstr("no.pem"));
    }
}

} // namespace
} // namespace quillo::publisher
