#include "tools/quillo/pictures/errors.h"
#include "tools/quillo/pictures/png_file.h"

#include <gtest/gtest.h>

namespace quillo::pictures {
namespace {

TEST(PngFile, EveryLayoutComesBack)
{
    struct kept
    {
        char const* layout;
        bytes picture;
    };
    for (kept const& k : {kept{"bgra", {1, 2, 3, 4, 5, 6, 7, 8}}, kept{"rgba", {1, 2, 3, 4, 5, 6, 7, 8}},
                          kept{"bgrx", {1, 2, 3, 255, 5, 6, 7, 255}}, kept{"rgbx", {1, 2, 3, 255, 5, 6, 7, 255}},
                          kept{"bgr", {1, 2, 3, 4, 5, 6}}, kept{"r_g_b", {1, 2, 3, 4, 5, 6}}, kept{"L", {1, 2}},
                          kept{"y", {1, 2}}, kept{"alpha", {0, 255}}}) {
        png_picture const back = read_png(write_png(k.picture, {2, 1}, k.layout), k.layout);
        EXPECT_EQ(back.file, k.picture) << k.layout;
        EXPECT_EQ(back.size.width, 2);
        EXPECT_EQ(back.size.height, 1);
    }
}

TEST(PngFile, ComponentsKeepTheirMeaning)
{
    bytes const red_as_rgba{255, 0, 0, 128};
    bytes const png = write_png(red_as_rgba, {1, 1}, "rgba");
    EXPECT_EQ(read_png(png, "bgra").file, (bytes{0, 0, 255, 128}));
    EXPECT_EQ(write_png({0, 0, 255}, {1, 1}, "bgr"), write_png({255, 0, 0}, {1, 1}, "r_g_b"));
}

TEST(PngFile, OtherLayoutsAreRefused)
{
    EXPECT_THROW(write_png({1, 2}, {1, 1}, "uyvy"), request_error);
    EXPECT_THROW(read_png({}, "v210"), request_error);
}

TEST(PngFile, RubbishIsRefused)
{
    EXPECT_THROW(read_png({}, "bgra"), input_error);
    EXPECT_THROW(read_png(bytes(100, 7), "bgra"), input_error);
    bytes cut = write_png(bytes(64 * 64 * 4, 9), {64, 64}, "bgra");
    cut.resize(cut.size() / 2);
    EXPECT_THROW(read_png(cut, "bgra"), input_error);
}

} // namespace
} // namespace quillo::pictures
