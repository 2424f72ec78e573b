#include "tools/quillo/pictures/errors.h"
#include "tools/quillo/pictures/picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo::pictures {
namespace {

conversions::conversion const& row(std::string_view name) { return *conversions::find(name); }

TEST(ParseSize, TakesWidthAndHeight)
{
    EXPECT_EQ(parse_size("1920x1080").width, 1920);
    EXPECT_EQ(parse_size("1x16384").height, 16384);
}

TEST(ParseSize, RefusesTheRest)
{
    for (char const* const text : {"", "1920", "1920x", "x1080", "0x5", "5x0", "-4x4", "16385x2", "10x10 ", "10x10x10",
                                   "99999999999x1", "1920*1080"})
        EXPECT_THROW(parse_size(text), request_error) << text;
}

TEST(FileSize, AddsPlanes)
{
    EXPECT_EQ(file_size(row("vuya::uyvy_a"), side::read, {5, 3}), 60u);
    EXPECT_EQ(file_size(row("vuya::uyvy_a"), side::written, {5, 3}), 30u + 15u);
    // Chroma of lines 0, 2 and 4.
    EXPECT_EQ(file_size(row("uyvy::y_u_v_420"), side::written, {4, 5}), 20u + 6u + 6u);
    EXPECT_EQ(file_size(row("v210::uyvy"), side::read, {7, 2}), 64u);
}

TEST(UsualSizes, AreThoseThatFit)
{
    EXPECT_EQ(usual_sizes(row("vuya::uyvy"), side::read, 1920 * 1080 * 4), "1920x1080, 1080x1920");
    EXPECT_EQ(usual_sizes(row("vuya::uyvy"), side::read, 7), "");
}

bytes const two_by_two{1, 2, 3, 255, 5, 6, 7, 255, 9, 10, 11, 255, 13, 14, 15, 255};

TEST(ConvertPicture, PlanesFollowEachOther)
{
    converted const c = convert(row("vuya::uyvy_a"), two_by_two, {2, 2}, {.ask_opaque = true});
    EXPECT_EQ(c.file, (bytes{2, 3, 1, 7, 10, 11, 9, 15, 255, 255, 255, 255}));
    EXPECT_TRUE(c.all_opaque);
}

TEST(ConvertPicture, BottomUpTurnsThePicture)
{
    converted const c = convert(row("vuyx::uyvy"), two_by_two, {2, 2}, {.bottom_up = true});
    EXPECT_EQ(c.file, (bytes{10, 11, 9, 15, 2, 3, 1, 7}));
}

TEST(ConvertPicture, LinesStayApartUnlessTight)
{
    bytes const line{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
    bytes source = line;
    source.insert(source.end(), line.begin(), line.end());
    // The last pair takes what lies beyond the line: nothing apart, the next line's first pixel when tight.
    EXPECT_EQ(convert(row("vuyx::uyvy"), source, {3, 2}, {}).file, (bytes{2, 3, 1, 6, 8, 9, 2, 3, 1, 6, 8, 9}));
    EXPECT_EQ(convert(row("vuyx::uyvy"), source, {3, 2}, {.tight_strides = true}).file,
              (bytes{2, 3, 1, 6, 8, 9, 7, 3, 5, 6, 4, 9}));
}

TEST(ConvertPicture, WrongSizeIsRefused)
{
    EXPECT_THROW(convert(row("vuyx::uyvy"), bytes(15), {2, 2}, {}), input_error);
}

// Every row, both ways of laying out memory, odd sizes included: nothing is written or read where it should not be
// (sanitizers tell), and library and reference give the same file.
TEST(ConvertPicture, EveryRowEqualsItsReference)
{
    for (conversions::conversion const& r : conversions::all())
        for (dimensions const size : {dimensions{1, 1}, {2, 2}, {3, 5}, {16, 2}, {37, 3}, {64, 4}})
            for (bool const tight : {false, true}) {
                if (!r.library || r.target().empty() || r.last == conversions::last_argument::value)
                    continue;
                bytes source(file_size(r, side::read, size));
                unsigned char next = 0;
                for (unsigned char& b : source)
                    b = next = static_cast<unsigned char>(next * 5 + 17);
                converted const ours = convert(r, source, size, {.tight_strides = tight, .by_reference = true});
                EXPECT_EQ(convert(r, source, size, {.tight_strides = tight}).file, ours.file)
                    << r.name << ' ' << size.width << 'x' << size.height;
            }
}

} // namespace
} // namespace quillo::pictures
