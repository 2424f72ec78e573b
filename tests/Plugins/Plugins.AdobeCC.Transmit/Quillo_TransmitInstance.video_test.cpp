#include <array>
#include <cstring>
#include <limits>

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::Each;
using testing::ElementsAre;

constexpr PrPixelFormat vuya = PrPixelFormat_VUYA_4444_8u_709;
constexpr PrPixelFormat bgra = PrPixelFormat_BGRA_4444_8u;

class Video : public TransmitTest
{
  protected:
    Video() { create_instance(); }

    void with_field_type(prFieldType type) { instance.inVideoFieldType = type; }

    // The rows of the picture, from the given one down, as they stand.
    static std::vector<unsigned char> rows(fake_picture& picture, int width, int first, int count)
    {
        std::vector<unsigned char> bytes;
        for (int y = first; y < first + count; ++y)
            bytes.insert(bytes.end(), picture.row(y), picture.row(y) + 4 * width);
        return bytes;
    }

    // The same rows as U Y V Y, chroma of the even pixels.
    static std::vector<unsigned char> uyvy_rows(fake_picture& picture, int width, int first, int count)
    {
        std::vector<unsigned char> bytes;
        for (int y = first; y < first + count; ++y) {
            for (int x = 0; x + 1 < width; x += 2) {
                unsigned char const* const even = picture.row(y) + 4 * x;
                bytes.insert(bytes.end(), {even[1], even[2], even[0], even[4 + 2]});
            }
        }
        return bytes;
    }

    void expect_black(sent_video const& sent, long long timecode)
    {
        EXPECT_EQ(sent.frame.width, 8);
        EXPECT_EQ(sent.frame.height, 8);
        EXPECT_EQ(sent.frame.fourCC, 0x58524742u); // BGRX
        EXPECT_EQ(sent.frame.frameFormat, 1);
        EXPECT_EQ(sent.frame.lineStride, 32);
        EXPECT_EQ(sent.frame.timecode, timecode);
        EXPECT_EQ(sent.bytes.size(), 256u);
        EXPECT_THAT(sent.bytes, Each(0));
    }
};

TEST_F(Video, NoFramesNoCalls)
{
    EXPECT_EQ(push({}, 254016000000), 0);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(Video, AsksFlushesSendsAndGivesBackInOrder)
{
    fake_picture picture(bgra, 16, 16);
    picture.paint(255);
    push({&picture});
    EXPECT_THAT(log.lines(),
                ElementsAre("GetBounds(picture)", "GetPixels(picture, 0)", "GetRowBytes(picture)",
                            "GetPixelFormat(picture)", "Quillolib_send_send_video(sender, null)",
                            "GetPixelAspectRatio(picture)",
                            "Quillolib_send_send_video_async(sender, 16x16 BGRX 30000/1001)", "Dispose(picture)"));
    EXPECT_EQ(picture.disposed, 1);
}

TEST_F(Video, ABlackFrameNeedsNoAspectRatio)
{
    fake_picture picture(PrPixelFormat_Invalid, 16, 16);
    push({&picture});
    EXPECT_THAT(log.lines(),
                ElementsAre("GetBounds(picture)", "GetPixels(picture, 0)", "GetRowBytes(picture)",
                            "GetPixelFormat(picture)", "Quillolib_send_send_video(sender, null)",
                            "Quillolib_send_send_video_async(sender, 8x8 BGRX 30000/1001)", "Dispose(picture)"));
}

TEST_F(Video, HostCallsHappenOnTheCallingThread)
{
    fake_picture picture(bgra, 16, 16);
    push({&picture});
    for (call const& entry : log.calls())
        EXPECT_EQ(entry.thread, std::this_thread::get_id()) << entry.text;
}

TEST_F(Video, ABgraPictureLeavesTheRightWayUp)
{
    fake_picture picture(bgra, 10, 12);
    picture.paint(200);
    auto const sent = send(picture);
    EXPECT_EQ(sent.frame.width, 10);
    EXPECT_EQ(sent.frame.height, 12);
    EXPECT_EQ(sent.frame.fourCC, 0x41524742u); // BGRA
    EXPECT_EQ(sent.frame.lineStride, 40);
    EXPECT_EQ(sent.frame.frameFormat, 1);
    EXPECT_EQ(sent.bytes, rows(picture, 10, 0, 12));
}

TEST_F(Video, PaddedAndNegativeRowsAreFollowed)
{
    for (int const row_bytes : {64, 61, -40, -48, -56}) {
        fake_picture picture(bgra, 10, 12, row_bytes);
        picture.paint(3);
        EXPECT_EQ(send(picture).bytes, rows(picture, 10, 0, 12)) << row_bytes;
    }
}

TEST_F(Video, AnOpaqueBgraPictureIsSentWithoutAlpha)
{
    fake_picture picture(bgra, 10, 12);
    picture.paint(255);
    EXPECT_EQ(send(picture).frame.fourCC, 0x58524742u);
    picture.row(11)[4 * 9 + 3] = 254;
    EXPECT_EQ(send(picture).frame.fourCC, 0x41524742u);
    picture.row(11)[4 * 9 + 3] = 255;
    picture.row(0)[3] = 0;
    EXPECT_EQ(send(picture).frame.fourCC, 0x41524742u);
}

TEST_F(Video, AVuyaPictureBecomesUyvyAndAnAlphaPlane)
{
    fake_picture picture(vuya, 10, 12);
    picture.paint(90);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 10; ++x)
            picture.row(y)[4 * x + 3] = static_cast<unsigned char>(10 * y + x);
    auto const sent = send(picture);
    EXPECT_EQ(sent.frame.width, 10);
    EXPECT_EQ(sent.frame.height, 12);
    EXPECT_EQ(sent.frame.fourCC, 0x41565955u); // UYVA
    EXPECT_EQ(sent.frame.lineStride, 20);
    ASSERT_EQ(sent.bytes.size(), 360u); // 3 x 10 x 12

    std::vector<unsigned char> const picture_part(sent.bytes.begin(), sent.bytes.begin() + 240);
    EXPECT_EQ(picture_part, uyvy_rows(picture, 10, 0, 12));
    std::vector<unsigned char> alpha;
    for (int y = 0; y < 12; ++y)
        for (int const x : {0, 0, 1, 1, 2, 2, 3, 3, 8, 9})
            alpha.push_back(static_cast<unsigned char>(10 * y + x));
    std::vector<unsigned char> const alpha_part(sent.bytes.begin() + 240, sent.bytes.end());
    EXPECT_EQ(alpha_part, alpha);
}

TEST_F(Video, AVuyaPictureIsSentWithoutAlphaWhenItCountsAsOpaque)
{
    // Bottom-up pictures are converted line by line; a line of whole blocks of eight never counts as opaque.
    fake_picture with_rest(vuya, 10, 12);
    with_rest.paint(255);
    auto const opaque = send(with_rest);
    EXPECT_EQ(opaque.frame.fourCC, 0x59565955u); // UYVY
    EXPECT_EQ(opaque.frame.lineStride, 20);
    EXPECT_EQ(opaque.bytes, uyvy_rows(with_rest, 10, 0, 12));

    fake_picture whole_blocks(vuya, 16, 12);
    whole_blocks.paint(255);
    EXPECT_EQ(send(whole_blocks).frame.fourCC, 0x41565955u);
}

TEST_F(Video, AnOddWidthLosesItsLastPixelButNotInTheAspectRatio)
{
    for (PrPixelFormat const format : {bgra, vuya}) {
        fake_picture picture(format, 1921, 9);
        picture.paint(7);
        picture.aspect_num = 4;
        picture.aspect_den = 3;
        auto const sent = send(picture);
        EXPECT_EQ(sent.frame.width, 1920);
        EXPECT_EQ(sent.frame.height, 9);
        EXPECT_EQ(sent.frame.lineStride, format == bgra ? 7680 : 3840);
        EXPECT_EQ(sent.frame.aspectRatio, (4.0f * 1921.0f) / (3.0f * 9.0f));
        if (format == bgra) {
            EXPECT_EQ(sent.bytes, rows(picture, 1920, 0, 9));
        } else {
            EXPECT_EQ(std::vector<unsigned char>(sent.bytes.begin(), sent.bytes.begin() + 3840 * 9),
                      uyvy_rows(picture, 1920, 0, 9));
        }
    }
}

TEST_F(Video, LowerFieldFirst486BecomesThe480BelowTheTopRow)
{
    with_field_type(prFieldsLowerFirst);
    fake_picture picture(vuya, 720, 486);
    picture.paint(255);
    picture.aspect_num = 10;
    picture.aspect_den = 11;
    auto const sent = send(picture);
    EXPECT_EQ(sent.frame.width, 720);
    EXPECT_EQ(sent.frame.height, 480);
    EXPECT_EQ(sent.frame.frameFormat, 0);
    EXPECT_EQ(sent.frame.aspectRatio, (10.0f * 720.0f) / (11.0f * 486.0f));
    ASSERT_GE(sent.bytes.size(), 1440u * 480u);
    EXPECT_EQ(std::vector<unsigned char>(sent.bytes.begin(), sent.bytes.begin() + 1440 * 480),
              uyvy_rows(picture, 720, 1, 480));
}

TEST_F(Video, LowerFieldFirstOfAnyOtherHeightLosesTwoRows)
{
    with_field_type(prFieldsLowerFirst);
    for (int const height : {576, 480, 1080, 16, 9}) {
        fake_picture picture(bgra, 16, height);
        picture.paint(1);
        auto const sent = send(picture);
        EXPECT_EQ(sent.frame.height, height - 2);
        EXPECT_EQ(sent.frame.frameFormat, 0);
        EXPECT_EQ(sent.bytes, rows(picture, 16, 1, height - 2));
    }
}

TEST_F(Video, LowerFieldFirstOfTwoRowsOrLessSendsNoRows)
{
    with_field_type(prFieldsLowerFirst);
    for (PrPixelFormat const format : {bgra, vuya}) {
        for (int const height : {0, 1, 2}) {
            fake_picture picture(format, 16, height);
            auto const sent = send(picture);
            EXPECT_EQ(sent.frame.width, 16);
            EXPECT_EQ(sent.frame.height, height - 2);
            EXPECT_EQ(sent.frame.fourCC, format == bgra ? 0x58524742u : 0x59565955u); // no row is not opaque
            EXPECT_EQ(picture.disposed, 1);
        }
    }
}

TEST_F(Video, UpperFieldFirstIsWovenAsItStands)
{
    with_field_type(prFieldsUpperFirst);
    fake_picture picture(bgra, 16, 486);
    picture.paint(1);
    auto const sent = send(picture);
    EXPECT_EQ(sent.frame.height, 486);
    EXPECT_EQ(sent.frame.frameFormat, 0);
    EXPECT_EQ(sent.bytes, rows(picture, 16, 0, 486));
}

TEST_F(Video, AnyOtherFieldTypeIsProgressive)
{
    for (prFieldType const type : {0, 3, 4, -1, 99}) {
        with_field_type(type);
        fake_picture picture(bgra, 16, 486);
        auto const sent = send(picture);
        EXPECT_EQ(sent.frame.height, 486) << type;
        EXPECT_EQ(sent.frame.frameFormat, 1) << type;
    }
}

TEST_F(Video, TheFieldTypeIsReadAtEveryPush)
{
    fake_picture picture(bgra, 16, 16);
    EXPECT_EQ(send(picture).frame.frameFormat, 1);
    with_field_type(prFieldsUpperFirst);
    EXPECT_EQ(send(picture).frame.frameFormat, 0);
}

TEST_F(Video, OtherFormatsBecomeABlackFrame)
{
    instance.inVideoFrameRate = 10160640000;
    activate(false, true);
    with_field_type(prFieldsUpperFirst);
    PrPixelFormat const others[] = {PrPixelFormat_Invalid,
                                    PrPixelFormat_VUYA_4444_8u, // lower case
                                    PrPixelFormat_BGRA_4444_16u,
                                    PrPixelFormat_BGRX_4444_8u,
                                    PrPixelFormat_UYVY_422_8u_709,
                                    static_cast<PrPixelFormat>(0xFFFFFFFF),
                                    PrPixelFormat_Any};
    for (PrPixelFormat const format : others) {
        fake_picture picture(format, 1920, 16);
        picture.paint(255);
        auto const sent = send(picture, 254016000000);
        expect_black(sent, 10000000);
        EXPECT_EQ(sent.frame.frameRateN, 25000);
        EXPECT_EQ(sent.frame.frameRateD, 1000);
        EXPECT_EQ(sent.frame.aspectRatio, 16.0f / 9.0f);
        EXPECT_EQ(picture.disposed, 1);
    }
}

TEST_F(Video, ABlackFrameHasTheShapeOfTheLastPicture)
{
    fake_picture wide(bgra, 2048, 858);
    fake_picture unknown(PrPixelFormat_Invalid, 64, 64);
    EXPECT_EQ(send(wide).frame.aspectRatio, 2048.0f / 858.0f);
    EXPECT_EQ(send(unknown).frame.aspectRatio, 2048.0f / 858.0f);
}

TEST_F(Video, ABlackFrameIsBlackInAUsedBuffer)
{
    fake_picture picture(bgra, 64, 64);
    picture.paint(0xEE);
    fake_picture unknown(PrPixelFormat_Invalid, 64, 64);
    send(picture);
    send(picture);
    expect_black(send(unknown), 0);
    expect_black(send(unknown), 0);
}

TEST_F(Video, OnlyPicturesSmallInBothDirectionsAreBlack)
{
    fake_picture small(bgra, 7, 7);
    small.paint(255);
    expect_black(send(small), 0);

    fake_picture sliver(bgra, 4, 1080);
    sliver.paint(255);
    auto const narrow = send(sliver);
    EXPECT_EQ(narrow.frame.width, 4);
    EXPECT_EQ(narrow.frame.height, 1080);
    EXPECT_EQ(narrow.bytes, rows(sliver, 4, 0, 1080));

    fake_picture strip(vuya, 1920, 7);
    strip.paint(255);
    EXPECT_EQ(send(strip).frame.height, 7);

    fake_picture eight(bgra, 8, 7);
    EXPECT_EQ(send(eight).frame.height, 7);
    fake_picture high(bgra, 7, 8);
    EXPECT_EQ(send(high).frame.width, 6);
}

TEST_F(Video, APictureOfOneColumnHasNoPairToSend)
{
    fake_picture column(vuya, 1, 1080);
    auto const sent = send(column);
    EXPECT_EQ(sent.frame.width, 0);
    EXPECT_EQ(sent.frame.height, 1080);
    EXPECT_EQ(sent.frame.lineStride, 0);
    EXPECT_EQ(column.disposed, 1);
}

TEST_F(Video, SizesAreDistancesBetweenTheBounds)
{
    fake_picture picture(bgra, 16, 12);
    picture.paint(9);
    picture.bounds = {100, 50, 112, 66};
    EXPECT_EQ(send(picture).bytes, rows(picture, 16, 0, 12));
    picture.bounds = {6, 8, -6, -8}; // bottom above top, right before left
    EXPECT_EQ(send(picture).bytes, rows(picture, 16, 0, 12));
}

TEST_F(Video, BoundsOfAllSixteenBitsAreWidenedFirst)
{
    fake_picture picture(PrPixelFormat_BGRA_4444_8u, 65535, 1);
    picture.bounds = {0, -32768, 1, 32767};
    auto const sent = send(picture);
    EXPECT_EQ(sent.frame.width, 65534);
    EXPECT_EQ(sent.frame.lineStride, 262136);
}

TEST_F(Video, FramesOfOnePushAreOneFrameDurationApart)
{
    fake_picture first(bgra, 16, 16);
    fake_picture second(PrPixelFormat_Invalid, 16, 16);
    fake_picture third(vuya, 16, 16);
    push({&first, &second, &third}, 254016000000);
    auto const videos = sender.videos();
    ASSERT_EQ(videos.size(), 3u);
    EXPECT_EQ(videos[0].frame.timecode, 10000000);
    EXPECT_EQ(videos[1].frame.timecode, 10333667);
    EXPECT_EQ(videos[2].frame.timecode, 10667334);
    EXPECT_EQ(first.disposed, 1);
    EXPECT_EQ(second.disposed, 1);
    EXPECT_EQ(third.disposed, 1);
}

TEST_F(Video, EachFrameOfAPushIsGivenBackBeforeTheNext)
{
    fake_picture first(bgra, 16, 16);
    first.name = "first";
    fake_picture second(bgra, 16, 16);
    second.name = "second";
    push({&first, &second});
    auto const lines = log.lines();
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ(lines[7], "Dispose(first)");
    EXPECT_EQ(lines[8], "GetBounds(second)");
    EXPECT_EQ(lines[15], "Dispose(second)");
}

TEST_F(Video, NegativeTimesAreSentAsTheyAre)
{
    fake_picture picture(bgra, 16, 16);
    EXPECT_EQ(send(picture, -254016000000).frame.timecode, -9999999);
}

TEST_F(Video, TwoBuffersTakeTurns)
{
    fake_picture picture(bgra, 64, 64);
    std::array<unsigned char const*, 6> data;
    for (auto& address : data)
        address = send(picture).frame.data;
    EXPECT_NE(data[0], data[1]);
    for (std::size_t i = 2; i < data.size(); ++i)
        EXPECT_EQ(data[i], data[i - 2]) << "no allocation once the buffers have the size";
}

TEST_F(Video, BuffersOnlyGrow)
{
    fake_picture large(bgra, 64, 64);
    fake_picture small(bgra, 16, 16);
    fake_picture unknown(PrPixelFormat_Invalid, 16, 16);
    auto const* const first = send(large).frame.data;
    auto const* const second = send(large).frame.data;
    EXPECT_EQ(send(small).frame.data, first);
    EXPECT_EQ(send(unknown).frame.data, second);
    EXPECT_EQ(send(large).frame.data, first);
    EXPECT_EQ(send(large).frame.data, second);
}

TEST_F(Video, ThePictureIsSentAsItWasWhenPushed)
{
    // What the recording sender kept of each frame is compared with the buffer at the next video call.
    fake_picture picture(vuya, 1280, 720);
    for (int i = 0; i < 4; ++i) {
        picture.paint(static_cast<unsigned char>(i));
        send(picture);
    }
    activate(false, false);
    EXPECT_EQ(sender.disturbed_frames(), 0);
}

TEST_F(Video, AMissingPixelAspectRatioIsNoNumber)
{
    fake_picture picture(bgra, 16, 16);
    picture.aspect_num = 0;
    picture.aspect_den = 0;
    float const aspect = send(picture).frame.aspectRatio;
    EXPECT_NE(aspect, aspect);
}

} // namespace

} // namespace quillo::test
