// Which records are taken, and that nothing outside of them is read.
#include "sender/open/records.h"
#include "tests/sender/open/guarded_memory.h"
#include "tests/sender/open/sender_fixture.h"

#include <cmath>
#include <limits>

namespace quillo::test {

using open::check;
using open::picture;
using open::refusal;
using open::sound;

namespace {

unsigned char const anything[64] = {};
constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
constexpr auto highest = std::numeric_limits<std::int32_t>::max();

SenderVideoFrame video(std::uint32_t fourcc, int width, int height, int stride)
{
    return {.width = width,
            .height = height,
            .fourCC = fourcc,
            .frameRateN = 25,
            .frameRateD = 1,
            .aspectRatio = 1.5f,
            .frameFormat = FrameFormat_progressive,
            .timecode = 0,
            .data = anything,
            .lineStride = stride};
}

SenderAudioFrame audio(int rate, int channels, int samples, int stride)
{
    return {.sampleRate = rate,
            .channelCount = channels,
            .sampleCount = samples,
            .timecode = 0,
            .data = reinterpret_cast<float const*>(anything),
            .channelStride = stride};
}

template <class Record>
std::optional<refusal> why(Record const& record)
{
    auto const checked = check(record);
    auto const* const reason = std::get_if<refusal>(&checked);
    return reason ? std::optional{*reason} : std::nullopt;
}

} // namespace

TEST(records, TakeEveryPixelFormatOfTheInterface)
{
    EXPECT_EQ(std::get<picture>(check(video(SenderFourCC_UYVY, 1920, 1080, 3840))).bytes(), 1920u * 1080 * 2);
    EXPECT_EQ(std::get<picture>(check(video(SenderFourCC_UYVA, 1920, 1080, 3840))).bytes(), 1920u * 1080 * 3);
    EXPECT_EQ(std::get<picture>(check(video(SenderFourCC_BGRA, 1920, 1080, 7680))).bytes(), 1920u * 1080 * 4);
    EXPECT_EQ(std::get<picture>(check(video(SenderFourCC_BGRX, 8, 8, 32))).bytes(), 256u);
    EXPECT_EQ(std::get<picture>(check(video(SenderFourCC_BGRA, 16384, 16384, 65536))).bytes(), 1u << 30);
    for (std::uint32_t const unknown : {0u, 0x30313276u, 0x59565954u, 0xFFFFFFFFu})
        EXPECT_EQ(why(video(unknown, 64, 64, 256)), refusal::fourcc);
}

TEST(records, RefuseSizesOutOfRange)
{
    for (int const bad : {0, -1, lowest, 16385, highest}) {
        EXPECT_EQ(why(video(SenderFourCC_BGRA, bad, 8, highest)), refusal::size);
        EXPECT_EQ(why(video(SenderFourCC_BGRA, 8, bad, 32)), refusal::size);
        EXPECT_EQ(why(video(SenderFourCC_UYVA, bad, bad, 32)), refusal::size);
    }
    EXPECT_EQ(why(video(SenderFourCC_UYVY, 7, 8, 32)), refusal::size) << "4:2:2 goes by pairs";
    EXPECT_EQ(why(video(SenderFourCC_BGRA, 7, 8, 32)), std::nullopt);
}

TEST(records, RefuseStridesThatDoNotHoldALine)
{
    for (int const bad : {0, 1, 31, -31, -1})
        EXPECT_EQ(why(video(SenderFourCC_BGRA, 8, 8, bad)), refusal::stride) << bad;
    for (int const good : {32, 33, -32, -33, highest, lowest})
        EXPECT_EQ(why(video(SenderFourCC_BGRA, 8, 8, good)), std::nullopt) << good;
    EXPECT_EQ(why(video(SenderFourCC_UYVA, 8, 8, -16)), refusal::stride) << "no place for the alpha plane";
}

TEST(records, RefuseRatesThatAreNone)
{
    for (int const bad : {0, -1, lowest}) {
        auto frame = video(SenderFourCC_BGRA, 8, 8, 32);
        frame.frameRateN = bad;
        EXPECT_EQ(why(frame), refusal::rate);
        frame.frameRateN = 25;
        frame.frameRateD = bad;
        EXPECT_EQ(why(frame), refusal::rate);
        EXPECT_EQ(why(audio(bad, 2, 480, 1920)), refusal::rate);
    }
    EXPECT_EQ(why(audio(768001, 2, 480, 1920)), refusal::rate);
}

TEST(records, RefusePicturesWithoutData)
{
    auto frame = video(SenderFourCC_BGRA, 8, 8, 32);
    frame.data = nullptr;
    EXPECT_EQ(why(frame), refusal::no_data);
}

TEST(records, TakeSquarePixelsForAnAspectRatioThatIsNone)
{
    for (float const bad : {0.0f, -1.0f, std::nanf(""), HUGE_VALF, -HUGE_VALF}) {
        auto frame = video(SenderFourCC_BGRA, 16, 8, 64);
        frame.aspectRatio = bad;
        EXPECT_EQ(std::get<picture>(check(frame)).format.aspect, 2.0f);
    }
}

TEST(records, TakeAnythingButInterleavedForProgressive)
{
    auto frame = video(SenderFourCC_BGRA, 16, 8, 64);
    for (auto const& [given, taken] : {std::pair{0, 0}, {1, 1}, {2, 1}, {-1, 1}, {highest, 1}}) {
        frame.frameFormat = given;
        EXPECT_EQ(std::get<picture>(check(frame)).format.frame_format, taken);
    }
}

TEST(records, TakeSoundAsThePlugInSendsIt)
{
    EXPECT_EQ(std::get<sound>(check(audio(48000, 16, 480, 1920))).bytes(), 480u * 16 * 4);
    EXPECT_EQ(std::get<sound>(check(audio(22050, 2, 220, 880))).bytes(), 220u * 2 * 4);
    auto silence = audio(48000, 2, 480, 0);
    silence.data = nullptr;
    EXPECT_EQ(std::get<sound>(check(silence)).bytes(), 0u);
    EXPECT_EQ(why(audio(48000, 1, 480, 0)), std::nullopt) << "one channel needs no stride";
}

TEST(records, RefuseSoundOutOfRange)
{
    for (int const bad : {0, -1, 65, lowest, highest})
        EXPECT_EQ(why(audio(48000, bad, 480, 1920)), refusal::channels);
    for (int const bad : {0, -1, 65537, lowest, highest})
        EXPECT_EQ(why(audio(48000, 2, bad, highest)), refusal::size);
    for (int const bad : {0, 1919, -1919})
        EXPECT_EQ(why(audio(48000, 2, 480, bad)), refusal::stride);
    EXPECT_EQ(why(audio(48000, 64, 65536, highest)), refusal::size) << "does not fit a message";
    EXPECT_EQ(why(audio(100, 1, 1001 * 10, 0)), refusal::size) << "longer than ten seconds";
}

// Pictures of every layout that the interface allows.
template <class Judge>
void for_every_layout(Judge const& judge)
{
    for (auto const fourcc : {SenderFourCC_UYVY, SenderFourCC_UYVA, SenderFourCC_BGRA})
        for (int const padding : {0, 24})
            for (bool const upside_down : {false, true}) {
                if (upside_down && fourcc == SenderFourCC_UYVA)
                    continue;
                SCOPED_TRACE(testing::Message() << fourcc << " " << padding << " " << upside_down);
                judge(test_frame{64, 9, fourcc, padding, 3, upside_down}, padding);
            }
}

TEST(records, CopyNoByteOutsideOfAPicture)
{
    for_every_layout([](test_frame const& frame, int padding) {
        // The padding of the line at the end does not belong to the picture any more.
        bool const plane_behind = frame.record.fourCC == SenderFourCC_UYVA;
        auto const size = frame.memory.size() - (plane_behind ? 0u : static_cast<unsigned>(padding));
        guarded_memory const memory{std::span{frame.memory}.first(size)};
        auto record = frame.record;
        record.data = memory.start() + (frame.record.data - frame.memory.data());
        auto const checked = std::get<picture>(check(record));
        std::vector<std::byte> copied(checked.bytes());
        checked.copy_to(copied.data());
        EXPECT_EQ(copied, frame.tight);
    });
}

TEST(records, CopyALineToItsPlaceInTheWhole)
{
    for_every_layout([](test_frame const& frame, int) {
        auto const checked = std::get<picture>(check(frame.record));
        std::vector<std::byte> copied(checked.bytes());
        for (std::size_t const line : {8, 0, 5, 4, 3, 2, 1, 7, 6})
            checked.copy_lines(copied.data(), line, 1);
        EXPECT_EQ(copied, frame.tight);
        checked.copy_lines(copied.data(), 3, 0);
        EXPECT_EQ(copied, frame.tight);
    });
}

TEST(records, CopyChannelsWithoutTheirPadding)
{
    std::vector<float> samples(3 * 20);
    for (std::size_t at = 0; at < samples.size(); ++at)
        samples[at] = static_cast<float>(at);
    SenderAudioFrame frame = audio(48000, 3, 16, 80);
    frame.data = samples.data();
    auto const forwards = std::get<sound>(check(frame));
    std::vector<float> copied(3 * 16);
    forwards.copy_to(reinterpret_cast<std::byte*>(copied.data()));
    EXPECT_EQ(copied[0], 0.0f);
    EXPECT_EQ(copied[15], 15.0f);
    EXPECT_EQ(copied[16], 20.0f);
    EXPECT_EQ(copied[47], 55.0f);

    frame.data = samples.data() + 40;
    frame.channelStride = -80;
    std::get<sound>(check(frame)).copy_to(reinterpret_cast<std::byte*>(copied.data()));
    EXPECT_EQ(copied[0], 40.0f);
    EXPECT_EQ(copied[16], 20.0f);
    EXPECT_EQ(copied[47], 15.0f);
}

} // namespace quillo::test
