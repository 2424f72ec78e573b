#include "tools/stand_in_host/host_application.h"
#include "tools/stand_in_host/suites/host_state.h"
#include "tools/stand_in_host/suites/suites.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace quillo::stand_in {
namespace {

class Suites : public ::testing::Test
{
  protected:
    template <typename Suite>
    Suite const* acquire(char const* name, int version)
    {
        void const* suite = this;
        basic->AcquireSuite(name, version, &suite);
        return static_cast<Suite const*>(suite);
    }

    PPixHand issue(pixel_layout layout = pixel_layout::bgra)
    {
        video_description video;
        video.width = 33;
        video.height = 7;
        video.pixel_aspect_n = 10;
        video.pixel_aspect_d = 11;
        return state.frames.issue(state.frames.take(video, layout));
    }

    host_state state{0x46585443, 32};
    SPBasicSuite* basic = legacy_suites()->utilFuncs->getSPBasicSuite();
};

TEST_F(Suites, AreFoundByNameAndVersion)
{
    EXPECT_NE(acquire<void>("Premiere PPix Suite", 1), nullptr);
    EXPECT_NE(acquire<void>("Premiere Playmod Audio Suite", 4), nullptr);
    EXPECT_EQ(acquire<void>("Premiere PPix Suite", 2), nullptr);
    EXPECT_EQ(acquire<void>("MediaCore Sequence Info Suite", 5), nullptr);
    state.offers_audio = false;
    EXPECT_EQ(acquire<void>("Premiere Playmod Audio Suite", 4), nullptr);
    EXPECT_EQ(basic->ReleaseSuite("MediaCore Sequence Info Suite", 5), kSPNoError);
    EXPECT_THAT(state.log.releases(), ::testing::ElementsAre(suite_event{"MediaCore Sequence Info Suite", 5}));
    EXPECT_EQ(legacy_suites()->piInterfaceVer, 9);
}

TEST_F(Suites, TellTheHostApplication)
{
    auto const* const info = acquire<PrSDKAppInfoSuite>("MediaCore App Info Suite", 3);
    csSDK_uint32 code = 0;
    EXPECT_EQ(info->GetAppInfo(0, &code), suiteError_NoError);
    EXPECT_EQ(code, 0x46585443u);
    EXPECT_NE(info->GetAppInfo(7, &code), suiteError_NoError);
    EXPECT_EQ(host_applications().size(), 9u);
    EXPECT_EQ(find_host_application("mediaencoder")->code, 0x414D4520u);
    EXPECT_FALSE(find_host_application("other"));
}

TEST_F(Suites, TellTheTime)
{
    auto const* const times = acquire<PrSDKTimeSuite>("Premiere Time Suite", 1);
    PrTime t = 0;
    EXPECT_EQ(times->GetTicksPerSecond(&t), suiteError_NoError);
    EXPECT_EQ(t, 254016000000);
    EXPECT_EQ(times->GetTicksPerVideoFrame(kVideoFrameRate_NTSC, &t), suiteError_NoError);
    EXPECT_EQ(t, 8475667200);
    EXPECT_NE(times->GetTicksPerVideoFrame(kVideoFrameRate_Max, &t), suiteError_NoError);
    EXPECT_EQ(times->GetTicksPerAudioSample(44100, &t), suiteError_NoError);
    EXPECT_EQ(t, 5760000);
    EXPECT_EQ(times->GetTicksPerAudioSample(11000, &t), static_cast<prSuiteError>(suiteError_TimeRoundedAudioRate));
}

TEST_F(Suites, DescribeAFrame)
{
    auto const* const ppix = acquire<PrSDKPPixSuite>("Premiere PPix Suite", 1);
    PPixHand const frame = issue();
    prRect bounds{};
    EXPECT_EQ(ppix->GetBounds(frame, &bounds), suiteError_NoError);
    EXPECT_EQ(bounds.right - bounds.left, 33);
    EXPECT_EQ(bounds.bottom - bounds.top, 7);
    csSDK_int32 row_bytes = 0;
    ppix->GetRowBytes(frame, &row_bytes);
    EXPECT_EQ(row_bytes, 144 + 32); // 132 to the next 16, and the padding asked for
    csSDK_uint32 n = 0, d = 0;
    ppix->GetPixelAspectRatio(frame, &n, &d);
    EXPECT_EQ(n, 10u);
    EXPECT_EQ(d, 11u);
    PrPixelFormat format = PrPixelFormat_Invalid;
    ppix->GetPixelFormat(frame, &format);
    EXPECT_EQ(format, PrPixelFormat_BGRA_4444_8u);
    char* pixels = nullptr;
    EXPECT_EQ(ppix->GetPixels(frame, PrPPixBufferAccess_ReadOnly, &pixels), suiteError_NoError);
    EXPECT_NE(pixels, nullptr);
    EXPECT_NE(ppix->GetPixels(frame, PrPPixBufferAccess_ReadWrite, &pixels), suiteError_NoError);
    EXPECT_EQ(pixels, nullptr);
    EXPECT_EQ(ppix->Dispose(frame), suiteError_NoError);
}

TEST_F(Suites, TheFirstRowInMemoryIsTheBottomOne)
{
    video_description video;
    video.width = 4;
    video.height = 3;
    auto frame = state.frames.take(video, pixel_layout::vuya);
    picture_view const view = frame->view();
    view.row(2)[0] = 77;
    EXPECT_LT(view.stride, 0);
    EXPECT_EQ(static_cast<unsigned char*>(frame->pix()->pix)[0], 77);
}

TEST_F(Suites, KnowAFrameThatWasDisposed)
{
    auto const* const ppix = acquire<PrSDKPPixSuite>("Premiere PPix Suite", 1);
    PPixHand const frame = issue();
    ppix->Dispose(frame);
    EXPECT_NE(issue(), frame) << "a handle is not used again at once";
    prRect bounds{};
    EXPECT_NE(ppix->GetBounds(frame, &bounds), suiteError_NoError);
    EXPECT_NE(ppix->Dispose(frame), suiteError_NoError);
    PPix* stranger = nullptr;
    EXPECT_NE(ppix->Dispose(&stranger), suiteError_NoError);
    EXPECT_THAT(state.log.breaches(),
                ::testing::UnorderedElementsAre(::testing::Pair("GetBounds with a frame that was disposed before", 1),
                                                ::testing::Pair("Dispose with a frame that was disposed before", 1),
                                                ::testing::Pair("Dispose with a handle that is no frame's", 1)));
    EXPECT_EQ(state.frames.counts().outstanding(), 1);
}

TEST_F(Suites, HandlesDoNotGrowForEver)
{
    std::set<PPixHand> handles;
    for (int k = 0; k < 5000; ++k) {
        PPixHand const frame = issue();
        handles.insert(frame);
        state.frames.dispose(frame);
    }
    EXPECT_LT(handles.size(), 1100u);
}

} // namespace
} // namespace quillo::stand_in
