#include <array>
#include <cstring>
#include <limits>

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::ElementsAre;

constexpr PrPixelFormat bgra = PrPixelFormat_BGRA_4444_8u;

class Instance : public TransmitTest
{
  protected:
    // The video mode's record of a host, filled with a pattern beforehand.
    struct mode_answer
    {
        tmResult result;
        std::array<unsigned char, sizeof(tmVideoMode) + 16> bytes;
    };

    mode_answer query(csSDK_int32 index)
    {
        mode_answer answer;
        answer.bytes.fill(0xC3);
        answer.result =
            functions.QueryVideoMode(&parms, &instance, index, reinterpret_cast<tmVideoMode*>(answer.bytes.data()));
        return answer;
    }

    // Six 32-bit values, then the untouched stream label, then a latency of zero.
    static std::array<unsigned char, sizeof(tmVideoMode) + 16> mode(std::array<csSDK_int32, 5> const& values,
                                                                    char const* format)
    {
        std::array<unsigned char, sizeof(tmVideoMode) + 16> bytes;
        bytes.fill(0xC3);
        std::memcpy(&bytes[0], values.data(), sizeof values);
        std::memcpy(&bytes[20], format, 4);
        std::memset(&bytes[40], 0, 8);
        return bytes;
    }

    // What the instance makes of a frame duration.
    std::pair<int, int> rate_for(PrTime ticks_per_frame)
    {
        instance.inVideoFrameRate = ticks_per_frame;
        activate(false, true);
        fake_picture picture(bgra, 8, 8);
        auto const frame = send(picture).frame;
        return {frame.frameRateN, frame.frameRateD};
    }

    // The timecode that a push at this time carries.
    long long timecode_of(PrTime ticks)
    {
        fake_picture picture(bgra, 8, 8);
        return send(picture, ticks).frame.timecode;
    }

    void with_ticks_per_second(PrTime ticks)
    {
        host.ticks_per_second = ticks;
        create_instance();
    }
};

TEST_F(Instance, AsksTheTimeSuiteOnlyOnCreation)
{
    start_up();
    log.clear();
    EXPECT_EQ(functions.CreateInstance(&parms, &instance), 0);
    EXPECT_THAT(log.lines(), ElementsAre("GetTicksPerSecond()"));
}

TEST_F(Instance, OffersFourVideoModes)
{
    create_instance();
    instance.inVideoWidth = 720;
    instance.inVideoHeight = 486;
    instance.inVideoPARNum = 10;
    instance.inVideoPARDen = 11;
    instance.inVideoFieldType = prFieldsLowerFirst;

    auto const first = query(0);
    EXPECT_EQ(first.result, 1);
    EXPECT_EQ(first.bytes, mode({720, 486, 10, 11, 2}, "VUYA"));

    auto const second = query(1);
    EXPECT_EQ(second.result, 1);
    EXPECT_EQ(second.bytes, mode({720, 486, 10, 11, 2}, "bgra"));

    auto const third = query(2);
    EXPECT_EQ(third.result, 1);
    EXPECT_EQ(third.bytes, mode({0, 0, 0, 0, 4}, "VUYA"));

    auto const fourth = query(3);
    EXPECT_EQ(fourth.result, 0);
    EXPECT_EQ(fourth.bytes, mode({0, 0, 0, 0, 4}, "bgra"));
}

TEST_F(Instance, BeyondTheVideoModesOnlyTheLatencyIsZeroed)
{
    create_instance();
    std::array<unsigned char, sizeof(tmVideoMode) + 16> latency_only;
    latency_only.fill(0xC3);
    std::memset(&latency_only[40], 0, 8);
    for (csSDK_int32 const index :
         {4, 7, -1, std::numeric_limits<csSDK_int32>::max(), std::numeric_limits<csSDK_int32>::min()}) {
        auto const answer = query(index);
        EXPECT_EQ(answer.result, 0) << index;
        EXPECT_EQ(answer.bytes, latency_only) << index;
    }
}

TEST_F(Instance, OffersOneAudioModeWhateverTheIndex)
{
    create_instance();
    instance.inAudioSampleRate = 44100.75f;
    instance.inNumChannels = 6;
    for (int channel = 0; channel < 16; ++channel)
        instance.inChannelLabels[channel] = static_cast<PrAudioChannelLabel>(100 + channel);

    for (csSDK_int32 const index : {0, 1, 99, -3}) {
        std::array<unsigned char, sizeof(tmAudioMode)> bytes;
        bytes.fill(0xC3);
        EXPECT_EQ(functions.QueryAudioMode(&parms, &instance, index, reinterpret_cast<tmAudioMode*>(bytes.data())), 0);

        std::array<unsigned char, sizeof(tmAudioMode)> expected;
        expected.fill(0xC3); // the names of the outputs stay
        float const rate = 44100.75f;
        csSDK_uint32 const one_second = 44100;
        csSDK_uint32 const channels = 6;
        std::memcpy(&expected[0], &rate, 4);
        std::memcpy(&expected[4], &one_second, 4);
        std::memcpy(&expected[8], &channels, 4);
        for (csSDK_uint32 channel = 0; channel < 16; ++channel) {
            csSDK_uint32 const label = 100 + channel;
            std::memcpy(&expected[12 + 4 * channel], &label, 4);
        }
        std::memset(&expected[76], 0, 8);
        EXPECT_EQ(bytes, expected) << index;
    }
}

TEST_F(Instance, SendsThirtyOver1001UntilItKnowsBetter)
{
    create_instance();
    fake_picture picture(PrPixelFormat_Invalid, 8, 8);
    auto const frame = send(picture).frame;
    EXPECT_EQ(frame.frameRateN, 30000);
    EXPECT_EQ(frame.frameRateD, 1001);
    EXPECT_EQ(frame.aspectRatio, 16.0f / 9.0f);
}

TEST_F(Instance, ChoosesTheFractionNearestToTheFrameRate)
{
    create_instance();
    using rate = std::pair<int, int>;
    EXPECT_EQ(rate_for(8475667200), rate(30000, 1001));
    EXPECT_EQ(rate_for(10160640000), rate(25000, 1000));
    EXPECT_EQ(rate_for(10594584000), rate(24000, 1001));
    EXPECT_EQ(rate_for(10584000000), rate(24000, 1000));
    EXPECT_EQ(rate_for(8467200000), rate(30000, 1000));
    EXPECT_EQ(rate_for(5080320000), rate(50000, 1000));
    EXPECT_EQ(rate_for(4237833600), rate(60000, 1001));
    EXPECT_EQ(rate_for(4233600000), rate(60000, 1000));
    EXPECT_EQ(rate_for(20321280000), rate(12500, 1000));
    // 70 frames in three seconds: 23.333 x 1000 is 23333, off by a third of a thousandth; 28000/1200 is the nearest.
    EXPECT_EQ(rate_for(10886400000), rate(28000, 1200));
    // Three per second fits all denominators: the first stays.
    EXPECT_EQ(rate_for(84672000000), rate(3000, 1000));
}

TEST_F(Instance, AnEndlessFrameRateChangesNothing)
{
    create_instance();
    EXPECT_EQ(rate_for(10160640000), std::make_pair(25000, 1000));
    EXPECT_EQ(rate_for(0), std::make_pair(25000, 1000));
}

TEST_F(Instance, WithoutVideoTheFrameRateStays)
{
    create_instance();
    EXPECT_EQ(rate_for(10160640000), std::make_pair(25000, 1000));
    instance.inVideoFrameRate = 4233600000;
    activate(true, false);
    fake_picture picture(bgra, 8, 8);
    EXPECT_EQ(send(picture).frame.frameRateN, 25000);
}

TEST_F(Instance, DeactivationAlwaysFlushesTwice)
{
    create_instance();
    EXPECT_EQ(activate(false, false), 0);
    EXPECT_THAT(log.lines(),
                ElementsAre("Quillolib_send_send_video(sender, null)", "Quillolib_send_send_video(sender, null)"));
    log.clear();
    EXPECT_EQ(activate(true, false), 0);
    EXPECT_THAT(log.lines(),
                ElementsAre("Quillolib_send_send_video(sender, null)", "Quillolib_send_send_video(sender, null)"));
}

TEST_F(Instance, ActivationCallsNobody)
{
    create_instance();
    for (PrActivationEvent const event :
         {PrActivationEvent_Unspecified, PrActivationEvent_RecorderActivated, PrActivationEvent_ApplicationLostFocus})
        EXPECT_EQ(functions.ActivateDeactivate(&parms, &instance, event, 2, -1), 0);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(Instance, ThePicturesGrowAgainAfterDeactivation)
{
    create_instance();
    activate(true, true);
    fake_picture picture(bgra, 16, 16);
    picture.paint(255);
    auto const before = send(picture).bytes;
    send(picture);
    activate(true, false);
    EXPECT_EQ(send(picture).bytes, before);
    EXPECT_EQ(send(picture).bytes, before);
}

TEST_F(Instance, TheHostsTicksAre127008InFiveNetworkUnits)
{
    create_instance();
    EXPECT_EQ(timecode_of(254016000000), 10000000);
    EXPECT_EQ(timecode_of(127008), 5);
    EXPECT_EQ(timecode_of(63504), 3); // two and a half
    EXPECT_EQ(timecode_of(12700), 0); // just less than a half
    EXPECT_EQ(timecode_of(12701), 1); // just more
    EXPECT_EQ(timecode_of(-254016000000), -9999999);
}

TEST_F(Instance, ATimeScaleBeyond31BitsIsHalvedOnce)
{
    // 2^31 + 1 shares no factor with ten million: 10000000 / 2147483649 becomes 5000000 / 1073741824.
    with_ticks_per_second(2147483649);
    EXPECT_EQ(timecode_of(2147483649000000), 10000000004657);
}

TEST_F(Instance, ATimeScaleBeyond32BitsIsHalvedOnceMoreThanThat)
{
    // 2^32 + 1: 10000000 / 4294967297, 5000000 / 2147483648, 2500000 / 1073741824.
    with_ticks_per_second(4294967297);
    EXPECT_EQ(timecode_of(4294967297000000), 10000000002328);
}

TEST_F(Instance, ATimeScaleBelow31BitsIsKept)
{
    // 2^31 - 1 is prime.
    with_ticks_per_second(2147483647);
    EXPECT_EQ(timecode_of(2147483647000000), 10000000000000);
}

} // namespace

} // namespace quillo::test
