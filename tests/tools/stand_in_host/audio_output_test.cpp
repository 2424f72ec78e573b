#include "tools/stand_in_host/audio_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo::stand_in {
namespace {

// Every sample is its own number, so that what arrives tells where it is from.
class ramp : public source
{
  public:
    explicit ramp(int channel_count) : channels(channel_count) {}
    std::string title() const override { return "ramp"; }
    video_description video() const override { return {}; }
    std::optional<audio_description> audio() const override { return audio_description{48000, channels, {}}; }
    std::optional<std::int64_t> frame_count() const override { return std::nullopt; }
    bool draw(std::int64_t, picture_view const&) override { return true; }
    void read_audio(std::int64_t first, int count, float* const* to) override
    {
        for (int c = 0; c < channels; ++c)
            for (int k = 0; k < count; ++k)
                to[c][k] = static_cast<float>(first + k) + static_cast<float>(c) * 0.25f;
    }

  private:
    int channels;
};

constexpr ticks sample_ticks = 5292000;

class AudioOutput : public ::testing::Test
{
  protected:
    // 25 frames a second: 1920 samples a frame.
    static playback_plan plan(double speed = 1, bool loop = false)
    {
        playback_plan p;
        p.frame_length = 1920 * sample_ticks;
        p.in = 0;
        p.out = 2;
        p.first = speed > 0 ? 0 : 1;
        p.loop = loop;
        p.speed = speed;
        return p;
    }

    static host::audio_range range(playback_plan const& p)
    {
        return {p.time_of(p.in), p.time_of(p.out), p.start_time(), p.loop ? kPrTrue : kPrFalse};
    }

    void begin(playback_plan const& p)
    {
        out.prepare(p);
        EXPECT_EQ(out.set_up(p.scrubbing, {48000, 480, {}}), suiteError_NoError);
        EXPECT_EQ(out.start(range(p), static_cast<float>(p.speed)), suiteError_NoError);
    }

    void end()
    {
        EXPECT_EQ(out.stop(), suiteError_NoError);
        out.cease();
    }

    prSuiteError pull()
    {
        float* const buffers[2] = {left, right};
        return out.pull(buffers, 480, &time);
    }

    journal log;
    ramp clip{2};
    audio_output out{clip, log};
    float left[480]{};
    float right[480]{};
    PrTime time = -1;
};

TEST_F(AudioOutput, GivesTheSamplesInOrderWithTheirTimes)
{
    begin(plan());
    for (int block = 0; block < 8; ++block) {
        ASSERT_EQ(pull(), suiteError_NoError);
        EXPECT_EQ(time, block * 480 * sample_ticks);
        EXPECT_EQ(left[0], static_cast<float>(block * 480));
        EXPECT_EQ(left[479], static_cast<float>(block * 480 + 479));
        EXPECT_EQ(right[1], static_cast<float>(block * 480 + 1) + 0.25f);
    }
    ASSERT_EQ(pull(), suiteError_NoError) << "beyond the end";
    EXPECT_THAT(left, ::testing::Each(0.0f));
    end();
    EXPECT_THAT(log.breaches(), ::testing::IsEmpty());
}

TEST_F(AudioOutput, LoopsWithoutAGap)
{
    begin(plan(1, true));
    for (int sample = 0; sample < 3 * 3840; sample += 480) {
        ASSERT_EQ(pull(), suiteError_NoError);
        EXPECT_EQ(time, sample % 3840 * sample_ticks);
        for (int k = 0; k < 480; ++k)
            ASSERT_EQ(left[k], static_cast<float>((sample + k) % 3840));
    }
    end();
}

TEST_F(AudioOutput, DoubleSpeedTakesEverySecondSample)
{
    begin(plan(2));
    ASSERT_EQ(pull(), suiteError_NoError);
    EXPECT_EQ(left[10], 20.0f);
    ASSERT_EQ(pull(), suiteError_NoError);
    EXPECT_EQ(left[0], 960.0f);
    EXPECT_EQ(time, 960 * sample_ticks);
    end();
}

TEST_F(AudioOutput, HalfSpeedGoesBetweenSamples)
{
    begin(plan(0.5));
    ASSERT_EQ(pull(), suiteError_NoError);
    EXPECT_EQ(left[1], 0.5f);
    EXPECT_EQ(left[200], 100.0f);
    end();
}

TEST_F(AudioOutput, BackwardsFalls)
{
    begin(plan(-1));
    ASSERT_EQ(pull(), suiteError_NoError);
    EXPECT_EQ(time, 3840 * sample_ticks);
    EXPECT_EQ(left[0] - left[1], 1.0f);
    EXPECT_EQ(left[0], 3840.0f);
    end();
}

TEST_F(AudioOutput, OneChannelFillsTwoBuffers)
{
    ramp mono(1);
    audio_output two(mono, log);
    EXPECT_EQ(two.channels(), 2);
    two.prepare(plan());
    two.set_up(false, {48000, 480, {}});
    two.start(range(plan()), 1);
    float* const buffers[2] = {left, right};
    ASSERT_EQ(two.pull(buffers, 480, &time), suiteError_NoError);
    EXPECT_EQ(left[100], 100.0f);
    EXPECT_EQ(right[100], 100.0f);
    two.stop();
    two.cease();
}

TEST_F(AudioOutput, RefusesCallsOutOfOrder)
{
    out.prepare(plan());
    EXPECT_EQ(pull(), static_cast<prSuiteError>(suiteError_PlayModuleAudioNotInitialized));
    EXPECT_EQ(out.start(range(plan()), 1), static_cast<prSuiteError>(suiteError_PlayModuleAudioNotInitialized));
    EXPECT_EQ(out.stop(), static_cast<prSuiteError>(suiteError_PlayModuleAudioNotInitialized));
    EXPECT_EQ(out.set_up(false, {44100, 441, {}}),
              static_cast<prSuiteError>(suiteError_PlayModuleAudioIllegalPlaySetting));
    EXPECT_EQ(out.set_up(false, {48000, 480, {}}), suiteError_NoError);
    EXPECT_EQ(pull(), static_cast<prSuiteError>(suiteError_PlayModuleAudioNotStarted));
    EXPECT_EQ(out.set_up(false, {48000, 480, {}}), static_cast<prSuiteError>(suiteError_PlayModuleAudioIllegalAction));
    EXPECT_EQ(out.stop(), suiteError_NoError);
    out.cease();
    EXPECT_EQ(out.set_up(false, {48000, 480, {}}), static_cast<prSuiteError>(suiteError_PlayModuleAudioIllegalAction));
    EXPECT_EQ(out.counts().refused, 7);
    EXPECT_EQ(log.breaches().count("audio set up outside playback"), 1u);
}

TEST_F(AudioOutput, NoticesARangeOrModeThatIsNotTheClocks)
{
    out.prepare(plan());
    out.set_up(true, {48000, 480, {}});
    auto other = range(plan());
    other.mStartTime = 5;
    out.start(other, 1);
    out.cease();
    EXPECT_THAT(log.breaches(), ::testing::UnorderedElementsAre(
                                    ::testing::Pair("audio set up for another play mode than the clock's", 1),
                                    ::testing::Pair("audio started with a range or speed that is not the clock's", 1),
                                    ::testing::Pair("audio not stopped when StopPlaybackClock returned", 1)));
}

} // namespace
} // namespace quillo::stand_in
