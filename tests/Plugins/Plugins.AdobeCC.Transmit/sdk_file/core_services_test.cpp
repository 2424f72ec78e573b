#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

class Fork : public testing::Test
{
  protected:
    Fork() : fork_(mkstemp(path_.data())) { unlink(path_.c_str()); }
    ~Fork() override { close(fork_); }

    long mark() const { return lseek(fork_, 0, SEEK_CUR); }

    std::string path_ = testing::TempDir() + "fork_XXXXXX";
    int fork_;
};

TEST_F(Fork, PositionModes)
{
    ByteCount actual = 0;
    ASSERT_EQ(FSWriteFork(fork_, fsAtMark, 99, 10, "0123456789", &actual), noErr); // the offset plays no part
    EXPECT_EQ(actual, 10u);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromStart, 3), noErr);
    EXPECT_EQ(mark(), 3);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromMark, 2), noErr);
    EXPECT_EQ(mark(), 5);
    EXPECT_EQ(FSSetForkPosition(fork_, fsAtMark, 77), noErr);
    EXPECT_EQ(mark(), 5);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromLEOF, -1), noErr);
    EXPECT_EQ(mark(), 9);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromStart, 50), noErr);
    EXPECT_EQ(mark(), 50);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromMark, -51), posErr);
    EXPECT_EQ(FSSetForkPosition(fork_, fsFromMark, 0x7FFFFFFFFFFFFFFF), posErr);
    EXPECT_EQ(mark(), 50);
    EXPECT_EQ(FSSetForkPosition(fork_, 4, 0), paramErr);
}

TEST_F(Fork, ReadsMoveTheMarkAndTellTheEnd)
{
    ASSERT_EQ(FSWriteFork(fork_, fsFromStart, 0, 10, "0123456789", nullptr), noErr);
    char buffer[8] = {};
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(fork_, fsFromStart, 2, 3, buffer, &actual), noErr);
    EXPECT_EQ(std::string(buffer, actual), "234");
    EXPECT_EQ(FSReadFork(fork_, fsAtMark, 0, 8, buffer, &actual), eofErr);
    EXPECT_EQ(std::string(buffer, actual), "56789");
    EXPECT_EQ(mark(), 10);
    EXPECT_EQ(FSReadFork(fork_, fsAtMark, 0, 1, buffer, &actual), eofErr);
    EXPECT_EQ(actual, 0u);
    EXPECT_EQ(FSReadFork(fork_, fsAtMark, 0, 0, buffer, &actual), noErr);
}

TEST_F(Fork, AReferenceThatIsNoneIsSaid)
{
    char byte = 0;
    EXPECT_EQ(FSReadFork(-1, fsAtMark, 0, 1, &byte, nullptr), rfNumErr);
    EXPECT_EQ(FSWriteFork(-1, fsFromStart, 0, 1, &byte, nullptr), rfNumErr);
    EXPECT_EQ(FSSetForkPosition(-1, fsFromLEOF, 0), rfNumErr);
}

TEST_F(Fork, TheHostsFileReferenceCarriesTheNumber)
{
    EXPECT_EQ(fork_of(file_of(37)), 37);
    EXPECT_EQ(fork_of(file_of(-1)), -1);
}

} // namespace
