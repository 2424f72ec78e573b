// A configuration file that changes under a running publisher.
#include "publisher/config/reload.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;

class reloading : public ::testing::Test
{
  protected:
    // As editors do: another file takes the name.
    void put_in_place(std::string const& text, mode_t mode = 0600)
    {
        std::ofstream{name_ + ".new"} << text;
        ASSERT_EQ(::chmod((name_ + ".new").c_str(), mode), 0);
        std::filesystem::rename(name_ + ".new", name_);
    }
    void write(std::string const& text) { std::ofstream{name_} << text; }

    void begin()
    {
        configuration_source const from{name_, [](configuration& to) { to.encoder = "said"; }};
        auto initial = std::filesystem::exists(name_) ? from.read() : configuration{};
        initial.encoder = "said";
        changes_ = std::make_unique<live_configuration>(from, initial, [this](configuration const& now) {
            std::lock_guard const lock{mutex_};
            applied_.push_back(now);
            came_.notify_all();
        });
    }

    // The next one that is applied.
    std::optional<configuration> next(std::chrono::milliseconds limit = 10s)
    {
        std::unique_lock lock{mutex_};
        if (!came_.wait_for(lock, limit, [&] { return applied_.size() > taken_; }))
            return std::nullopt;
        return applied_[taken_++];
    }

    testing::temporary_folder folder_;
    std::string const name_ = folder_.path() + "/quillo.conf";
    std::mutex mutex_;
    std::condition_variable came_;
    std::vector<configuration> applied_;
    std::size_t taken_ = 0;
    std::unique_ptr<live_configuration> changes_; // goes first
};

TEST_F(reloading, change_is_taken_over_however_it_is_written)
{
    put_in_place("[limits]\nconnections = 1\n");
    begin();
    write("[limits]\nconnections = 2\n");
    auto got = next();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->connections, 2);
    EXPECT_EQ(got->encoder, "said");
    put_in_place("[limits]\nconnections = 3\n");
    got = next();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->connections, 3);
}

TEST_F(reloading, bad_file_changes_nothing_and_says_so)
{
    put_in_place("[access]\nuser = anna\npassword = hunter2\n");
    begin();
    ::testing::internal::CaptureStderr();
    put_in_place("[access]\nuser = anna\n");
    // The good file behind it is the event that shows that the bad one has been seen, or passed over.
    changes_->look_now();
    EXPECT_FALSE(next(500ms));
    put_in_place("[access]\nuser = anna\npassword = hunter3\n");
    auto const got = next();
    auto const said = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->password, "hunter3");
    EXPECT_THAT(said, ::testing::HasSubstr(name_ + ":2: user also needs password"));
    EXPECT_THAT(said, ::testing::HasSubstr("is not used; the settings so far stay"));
    EXPECT_THAT(said, ::testing::Not(::testing::HasSubstr("hunter")));
}

TEST_F(reloading, file_that_goes_leaves_its_settings)
{
    put_in_place("[access]\nuser = anna\npassword = hunter2\n");
    begin();
    std::filesystem::remove(name_);
    changes_->look_now();
    EXPECT_FALSE(next(500ms));
    put_in_place("[access]\nuser = anna\npassword = hunter3\n");
    EXPECT_TRUE(next());
}

TEST_F(reloading, same_settings_again_are_no_change)
{
    put_in_place("[log]\nlevel = info\n");
    begin();
    put_in_place("# only a comment more\n[log]\nlevel = info\n");
    changes_->look_now();
    EXPECT_FALSE(next(500ms));
}

TEST(at_next_start, what_cannot_change_is_named)
{
    configuration now, wanted;
    EXPECT_EQ(at_next_start(now, wanted), "");
    wanted.connections = 5;
    EXPECT_EQ(at_next_start(now, wanted), "");
    wanted.port = 1;
    wanted.tls = true;
    EXPECT_EQ(at_next_start(now, wanted), "[network] port, [tls] enabled");
    wanted = now;
    wanted.password = "x";
    EXPECT_EQ(at_next_start(now, wanted), "who may see the page");
    wanted.page = false;
    EXPECT_EQ(at_next_start(now, wanted), "[page]");
}

} // namespace
} // namespace quillo::publisher
