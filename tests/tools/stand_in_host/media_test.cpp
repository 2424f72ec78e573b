#include "tests/support/temporary_folder.h"
#include "tests/tools/stand_in_host/clips.h"
#include "tools/stand_in_host/media/input_error.h"
#include "tools/stand_in_host/media/media.h"

#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace quillo::stand_in {
namespace {

using ::testing::HasSubstr;

// How a clip is made and what the host must find in it.
struct clip_case
{
    friend void PrintTo(clip_case const& c, std::ostream* out) { *out << c.name; }

    std::string name;
    std::string suffix;
    std::string picture; // ffmpeg's test picture
    std::string options;
    std::string planes; // ffmpeg's format of the decoded frames
    int width;
    int height;
    frame_rate rate;
    int frames;
    field_order fields = field_order::progressive;
    int sub_x = 1; // powers of two by which chroma is smaller
    int sub_y = 1;
};

std::string bt709(std::string const& range = "tv")
{
    return " -colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range " + range + " ";
}

clip_case rate_case(std::string const& name, int n, int d)
{
    std::string const rate = std::to_string(n) + "/" + std::to_string(d);
    return {name,
            ".mp4",
            "testsrc2=s=64x36:r=" + rate,
            "-c:v libx264 -g 20 -pix_fmt yuv420p" + bt709(),
            "yuv420p",
            64,
            36,
            {n, d},
            50};
}

std::vector<clip_case> const& clip_cases()
{
    static std::vector<clip_case> const cases = {
        rate_case("rate_23_976", 24000, 1001),
        rate_case("rate_25", 25, 1),
        rate_case("rate_29_97", 30000, 1001),
        rate_case("rate_50", 50, 1),
        rate_case("rate_59_94", 60000, 1001),
        rate_case("rate_60", 60, 1),
        {"millisecond_times",
         ".mkv",
         "testsrc2=s=64x36:r=60000/1001",
         "-c:v libx264 -g 20 -pix_fmt yuv420p" + bt709(),
         "yuv420p",
         64,
         36,
         {60000, 1001},
         50},
        {"transport_stream",
         ".ts",
         "testsrc2=s=64x36:r=25",
         "-c:v libx264 -g 20 -pix_fmt yuv420p" + bt709(),
         "yuv420p",
         64,
         36,
         {25, 1},
         50},
        {"upper_first",
         ".mp4",
         "testsrc2=s=64x64:r=50",
         "-vf tinterlace=interleave_top,setfield=tff -c:v libx264 -flags +ildct+ilme -x264opts tff=1 -pix_fmt yuv420p" +
             bt709(),
         "yuv420p",
         64,
         64,
         {25, 1},
         25,
         field_order::upper_first},
        {"lower_first_486",
         ".mp4",
         "testsrc2=s=72x486:r=60000/1001",
         "-vf tinterlace=interleave_bottom,setfield=bff -c:v libx264 -flags +ildct+ilme -x264opts bff=1 -pix_fmt "
         "yuv422p" +
             bt709(),
         "yuv422p",
         72,
         486,
         {30000, 1001},
         25,
         field_order::lower_first,
         1,
         0},
        // Each field has 122 rows of chroma, the frame 243.
        {"lower_first_odd_chroma",
         ".mkv",
         "testsrc2=s=72x486:r=60000/1001",
         "-vf tinterlace=interleave_bottom,setfield=bff -c:v mpeg2video -q:v 3 -flags +ildct+ilme -top 0 -pix_fmt "
         "yuv420p" +
             bt709(),
         "yuv420p",
         72,
         486,
         {30000, 1001},
         25,
         field_order::lower_first},
        {"vertical",
         ".mp4",
         "testsrc2=s=36x64:r=25",
         "-c:v libx264 -pix_fmt yuv420p" + bt709(),
         "yuv420p",
         36,
         64,
         {25, 1},
         50},
        {"odd_both",
         ".mp4",
         "testsrc=s=65x37:r=25",
         "-c:v libx264 -pix_fmt yuv444p" + bt709(),
         "yuv444p",
         65,
         37,
         {25, 1},
         50,
         field_order::progressive,
         0,
         0},
        {"odd_subsampled",
         ".mkv",
         "testsrc=s=65x37:r=25",
         "-c:v libvpx-vp9 -lossless 1 -pix_fmt yuv420p" + bt709(),
         "yuv420p",
         65,
         37,
         {25, 1},
         50},
        {"packed",
         ".avi",
         "testsrc2=s=64x36:r=25",
         "-c:v rawvideo -pix_fmt uyvy422",
         "yuv422p",
         64,
         36,
         {25, 1},
         50,
         field_order::progressive,
         1,
         0},
    };
    return cases;
}

double seconds_of(clip_case const& c) { return c.frames * static_cast<double>(c.rate.d) / c.rate.n; }

// The weights that the file's caps do not state are the host's guess by height.
struct weights
{
    double kr, kb;
};
constexpr weights w601{0.299, 0.114};
constexpr weights w709{0.2126, 0.0722};

int rounded(double value) { return static_cast<int>(std::clamp(std::floor(value + 0.5), 0.0, 255.0)); }

// V, U, Y in BT.709 from the components of an encoding, both limited range.
std::array<int, 3> to_709(int y, int u, int v, weights from)
{
    double const luma = (y - 16) / 219.0;
    double const b = luma + 2 * (1 - from.kb) * (u - 128) / 224.0;
    double const r = luma + 2 * (1 - from.kr) * (v - 128) / 224.0;
    double const g = (luma - from.kr * r - from.kb * b) / (1 - from.kr - from.kb);
    double const y709 = w709.kr * r + (1 - w709.kr - w709.kb) * g + w709.kb * b;
    return {rounded(128 + 224 * (r - y709) / (2 * (1 - w709.kr))),
            rounded(128 + 224 * (b - y709) / (2 * (1 - w709.kb))), rounded(16 + 219 * y709)};
}

// What a host picture of a frame must be: chroma repeated, within its field where there are two.
std::vector<unsigned char> expected(clip_case const& c, unsigned char const* frame)
{
    int const chroma_width = (c.width + (1 << c.sub_x) - 1) >> c.sub_x;
    int const chroma_height = (c.height + (1 << c.sub_y) - 1) >> c.sub_y;
    unsigned char const* const u = frame + c.width * c.height;
    unsigned char const* const v = u + chroma_width * chroma_height;
    std::vector<unsigned char> picture;
    for (int y = 0; y < c.height; ++y) {
        int row = y;
        if (c.sub_y == 1)
            row = c.fields == field_order::progressive ? y / 2 : y / 4 * 2 + y % 2;
        if (row >= chroma_height)
            row -= 2; // the last one of its field
        for (int x = 0; x < c.width; ++x) {
            int const at = row * chroma_width + (x >> c.sub_x);
            picture.insert(picture.end(), {v[at], u[at], frame[y * c.width + x], 255});
        }
    }
    return picture;
}

class Media : public ::testing::TestWithParam<clip_case>
{
  protected:
    static void SetUpTestSuite()
    {
        gst_init(nullptr, nullptr);
        folder = std::make_unique<quillo::testing::temporary_folder>();
    }
    static void TearDownTestSuite() { folder.reset(); }

    static std::string make(std::string const& name, std::string const& arguments)
    {
        std::string const path = folder->path() + "/" + name;
        ffmpeg(arguments + " " + path);
        return path;
    }

    static std::string make(clip_case const& c)
    {
        return make(c.name + c.suffix,
                    "-f lavfi -i " + c.picture + " -t " + std::to_string(seconds_of(c) - 0.001) + " " + c.options);
    }

    static inline std::unique_ptr<quillo::testing::temporary_folder> folder;
};

std::vector<unsigned char> draw(source& clip, std::int64_t number, pixel_layout layout = pixel_layout::vuya)
{
    int const width = clip.video().width;
    int const height = clip.video().height;
    std::vector<unsigned char> picture(static_cast<std::size_t>(width * height * bytes_per_pixel), 0x5A);
    if (!clip.draw(number, {layout, width, height, picture.data(), width * bytes_per_pixel}))
        picture.clear();
    return picture;
}

TEST_P(Media, EveryFrameIsTheFilesOwn)
{
    clip_case const& c = GetParam();
    std::string const path = make(c);
    auto const clip = open_media(path, true);
    video_description const video = clip->video();
    EXPECT_EQ(video.width, c.width);
    EXPECT_EQ(video.height, c.height);
    EXPECT_EQ(video.rate, c.rate);
    EXPECT_EQ(video.fields, c.fields);
    EXPECT_FALSE(clip->audio());

    auto const planes = decoded(path, c.planes);
    std::size_t const size = planes.size() / static_cast<std::size_t>(c.frames);
    ASSERT_EQ(size * static_cast<std::size_t>(c.frames), planes.size());
    bool const is_untagged = c.name == "packed"; // and small: taken as BT.601
    auto matches = [&](int number, std::vector<unsigned char> const& picture) {
        auto wanted = expected(c, planes.data() + static_cast<std::size_t>(number) * size);
        if (is_untagged)
            for (std::size_t k = 0; k < wanted.size(); k += 4) {
                auto const pixel = to_709(wanted[k + 2], wanted[k + 1], wanted[k], w601);
                std::copy(pixel.begin(), pixel.end(), wanted.begin() + static_cast<std::ptrdiff_t>(k));
            }
        return picture == wanted;
    };
    int wrong = 0;
    for (int number = 0; number < c.frames; ++number)
        wrong += matches(number, draw(*clip, number)) ? 0 : 1;
    EXPECT_EQ(wrong, 0) << "read on";
    EXPECT_TRUE(draw(*clip, c.frames).empty()) << "beyond the end";
    EXPECT_EQ(clip->frame_count(), c.frames);
    for (int number = c.frames - 1; number >= 0; --number)
        wrong += matches(number, draw(*clip, number)) ? 0 : 1;
    EXPECT_EQ(wrong, 0) << "backwards";
    for (int number : {c.frames - 1, 0, c.frames / 2, 1, c.frames - 2, c.frames / 3})
        wrong += matches(number, draw(*clip, number)) ? 0 : 1;
    EXPECT_EQ(wrong, 0) << "here and there";
}

INSTANTIATE_TEST_SUITE_P(Clips, Media, ::testing::ValuesIn(clip_cases()), [](auto const& c) { return c.param.name; });

class MediaColors : public Media
{
};

// A lossless clip of one colour per column, so that each pixel can be worked out by hand.
TEST_F(MediaColors, FullRangeBecomesLimited)
{
    auto const path = make(
        "full.mkv",
        "-f lavfi -i color=gray:s=16x8:r=25,format=yuvj420p,geq=lum=255:cb=128:cr=128 -t 0.2 -c:v ffv1" + bt709("pc"));
    auto const picture = draw(*open_media(path, false), 0);
    EXPECT_THAT(std::vector<int>(picture.begin(), picture.begin() + 4), ::testing::ElementsAre(128, 128, 235, 255));
}

TEST_F(MediaColors, RgbBecomesBt709)
{
    auto const path = make("rgb.mov", "-f lavfi -i color=0x00FF00:s=16x8:r=25,format=rgb24 -t 0.2 -c:v qtrle");
    auto const clip = open_media(path, false);
    EXPECT_EQ(clip->video().natural, pixel_layout::bgra);
    auto const vuya = draw(*clip, 0);
    EXPECT_THAT(std::vector<int>(vuya.begin(), vuya.begin() + 4), ::testing::ElementsAre(26, 42, 173, 255));
    auto const bgra = draw(*clip, 0, pixel_layout::bgra);
    EXPECT_THAT(std::vector<int>(bgra.begin(), bgra.begin() + 4), ::testing::ElementsAre(0, 255, 0, 255));
}

TEST_F(MediaColors, AlphaIsKept)
{
    auto const path = make("alpha.mov", "-f lavfi -i color=0xFF000080:s=16x8:r=25,format=argb -t 0.2 -c:v qtrle");
    auto const bgra = draw(*open_media(path, false), 0, pixel_layout::bgra);
    EXPECT_THAT(std::vector<int>(bgra.begin(), bgra.begin() + 4), ::testing::ElementsAre(0, 0, 255, 128));
}

TEST_F(MediaColors, TenBitsAreRounded)
{
    auto const path = make("deep.mkv", "-f lavfi -i color=gray:s=16x8:r=25,format=yuv422p10,geq=lum=603:cb=514:cr=509 "
                                       "-t 0.2 -c:v ffv1" +
                                           bt709());
    auto const picture = draw(*open_media(path, false), 0);
    // 603/4 = 150.75, 514/4 = 128.5, 509/4 = 127.25
    EXPECT_THAT(std::vector<int>(picture.begin(), picture.begin() + 4), ::testing::ElementsAre(127, 129, 151, 255));
}

TEST_F(MediaColors, TurnedPicturesStandUpright)
{
    auto const plain =
        make("plain.mp4", "-f lavfi -i testsrc2=s=64x36:r=25 -t 0.4 -c:v libx264 -pix_fmt yuv420p" + bt709());
    std::string const path = folder->path() + "/" + "turned.mp4";
    ffmpeg("-i " + plain + " -c copy -metadata:s:v rotate=90 " + path);
    auto const clip = open_media(path, false);
    EXPECT_EQ(clip->video().width, 36);
    EXPECT_EQ(clip->video().height, 64);
    EXPECT_FALSE(draw(*clip, 0).empty());
}

class MediaSound : public Media
{
};

TEST_F(MediaSound, FiveOneComesChannelByChannel)
{
    auto const path =
        make("surround.mov",
             "-f lavfi -i testsrc2=s=64x36:r=25 -f lavfi -i "
             "'aevalsrc=0.1*sin(600*t)|0.2*sin(700*t)|0.3*sin(800*t)|0.4*sin(900*t)|0.5*sin(1000*t)|0.6*sin(1100*t)"
             ":c=5.1:s=44100' -t 2 -c:v libx264 -pix_fmt yuv420p -c:a pcm_s16le");
    auto const clip = open_media(path, true);
    ASSERT_TRUE(clip->audio());
    EXPECT_EQ(clip->audio()->rate, 44100);
    EXPECT_EQ(clip->audio()->channels, 6);
    auto const labels = clip->audio()->labels;
    EXPECT_THAT(std::vector<int>(labels.begin(), labels.begin() + 6),
                ::testing::ElementsAre(100, 101, 102, 103, 104, 105));

    auto const wanted = decoded_sound(path);
    auto expect_block = [&](std::int64_t first) {
        std::vector<std::vector<float>> block(6, std::vector<float>(441));
        std::vector<float*> pointers;
        for (auto& channel : block)
            pointers.push_back(channel.data());
        clip->read_audio(first, 441, pointers.data());
        for (std::size_t k = 0; k < 441; ++k)
            for (std::size_t c = 0; c < 6; ++c) {
                std::size_t const at = (static_cast<std::size_t>(first) + k) * 6 + c;
                ASSERT_EQ(block[c][k], at < wanted.size() ? wanted[at] : 0.0f)
                    << "sample " << first + static_cast<int>(k) << " channel " << c;
            }
    };
    for (std::int64_t first = 0; first < 90000; first += 441)
        expect_block(first);
    for (std::int64_t first : {50000, 1000, 80000, 0, 44100})
        expect_block(first);
}

TEST_F(MediaSound, SixteenChannelsAreKeptOfMore)
{
    auto const path = make("many.mkv", "-f lavfi -i testsrc2=s=64x36:r=25 -f lavfi -i "
                                       "anullsrc=cl=24c:r=48000 -t 0.4 -c:v libx264 -pix_fmt yuv420p -c:a pcm_s16le");
    auto const clip = open_media(path, true);
    ASSERT_TRUE(clip->audio());
    EXPECT_EQ(clip->audio()->channels, 16);
}

TEST_F(MediaSound, PictureAndSoundOfCompressedFilesAlign)
{
    auto const path = make(
        "beep.mp4", "-f lavfi -i color=black:s=64x36:r=25,geq=lum='if(eq(mod(N\\,25)\\,10)\\,235\\,16)':cb=128:cr=128 "
                    "-f lavfi -i 'aevalsrc=if(between(mod(t\\,1)\\,0.4\\,0.44)\\,0.5*sin(2*PI*1000*t)\\,0):s=48000' "
                    "-t 3 -c:v libx264 -pix_fmt yuv420p -c:a aac -b:a 128k" +
                        bt709());
    auto const clip = open_media(path, true);
    ASSERT_TRUE(clip->audio());
    for (int second = 0; second < 3; ++second) {
        std::int64_t flash = -1;
        for (int number = second * 25; number < second * 25 + 25 && flash < 0; ++number)
            if (draw(*clip, number)[2] > 128)
                flash = number;
        EXPECT_EQ(flash, second * 25 + 10);
        std::vector<float> sound(48000);
        float* channel = sound.data();
        clip->read_audio(second * 48000, 48000, &channel);
        auto const onset = std::find_if(sound.begin(), sound.end(), [](float s) { return std::abs(s) > 0.1f; });
        EXPECT_NEAR(onset - sound.begin(), 0.4 * 48000, 48000 * 0.003); // the codec smears it
    }
}

class MediaErrors : public Media
{
  protected:
    static input_error error_of(std::string const& path)
    {
        try {
            open_media(path, true);
        } catch (input_error const& error) {
            return error;
        }
        return {input_error::reason::unreadable, "opened"};
    }
};

TEST_F(MediaErrors, AreOneLineAndSayWhy)
{
    auto const missing = error_of(folder->path() + "/none.mp4");
    EXPECT_EQ(missing.why, input_error::reason::unreadable);
    EXPECT_THAT(missing.what(), HasSubstr("No such file or directory"));

    std::ofstream(folder->path() + "/" + "text.mp4") << "just words\n";
    auto const text = error_of(folder->path() + "/text.mp4");
    EXPECT_EQ(text.why, input_error::reason::unreadable);
    EXPECT_THAT(text.what(), HasSubstr("text.mp4: "));
    EXPECT_THAT(text.what(), ::testing::Not(HasSubstr("\n")));

    EXPECT_THAT(error_of(folder->path()).what(), HasSubstr("it is a folder"));
    EXPECT_EQ(error_of("nonsense://nowhere").why, input_error::reason::unreadable);

    auto const sound = make("sound.m4a", "-f lavfi -i sine=440:d=0.3 -c:a aac");
    EXPECT_EQ(error_of(sound).why, input_error::reason::no_video);
}

TEST_F(MediaErrors, ACutFileEndsEarly)
{
    auto const whole = make("whole.ts", "-f lavfi -i testsrc2=s=64x36:r=25 -t 2 -c:v libx264 -g 10 -pix_fmt yuv420p");
    std::filesystem::resize_file(whole, std::filesystem::file_size(whole) / 2);
    auto const clip = open_media(whole, false);
    int frames = 0;
    while (frames < 100 && !draw(*clip, frames).empty())
        ++frames;
    EXPECT_GT(frames, 5);
    EXPECT_LT(frames, 50);
}

TEST_F(MediaErrors, AStillPictureHasNoEnd)
{
    auto const path = make("still.png", "-f lavfi -i color=0x00FF00:s=16x8 -frames:v 1");
    auto const clip = open_media(path, false);
    EXPECT_EQ(clip->frame_count(), std::nullopt);
    EXPECT_EQ(draw(*clip, 0), draw(*clip, 100000));
    EXPECT_FALSE(draw(*clip, 5).empty());
}

} // namespace
} // namespace quillo::stand_in
