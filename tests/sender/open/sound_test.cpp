// Sound on its way to the publisher.
#include "tests/sender/open/guarded_memory.h"
#include "tests/sender/open/sender_fixture.h"

namespace quillo::test {

using record = fake_publisher::record;

namespace {

class sound : public sender_test
{
  protected:
    fake_publisher publisher{folder.path(), {.want_audio = true}};

    bool heard(std::size_t count)
    {
        return publisher.wait_until([&](record const& seen) { return seen.sounds.size() >= count; });
    }
    // Sound is not kept for somebody who comes later: sends silence until the first is heard.
    void begin(sender_ptr const& sender)
    {
        SenderAudioFrame const silence{48000, 2, 480, 0, nullptr, 0};
        for (int attempt = 0; attempt < 1000; ++attempt) {
            Quillolib_send_send_audio(sender.get(), &silence);
            ++sent;
            if (publisher.wait_until([](record const& seen) { return !seen.sounds.empty(); }, 20ms))
                break;
        }
        // What was sent meanwhile is on its way too.
        ASSERT_TRUE(publisher.wait_until([&](record const& seen) {
            return !seen.sounds.empty() && seen.sounds.back().head.sample_index == (sent - 1) * 480;
        }));
        heard_at_begin = publisher.seen().sounds.size();
        ASSERT_GE(heard_at_begin, 1u);
    }
    void TearDown() override { EXPECT_EQ(publisher.seen().violations, std::vector<std::string>{}); }

    std::uint64_t sent = 0;
    std::size_t heard_at_begin = 0;
};

std::vector<float> ramp(std::size_t count)
{
    std::vector<float> samples(count);
    for (std::size_t at = 0; at < count; ++at)
        samples[at] = static_cast<float>(at) / static_cast<float>(count);
    return samples;
}

} // namespace

TEST_F(sound, ArrivesSampleForSample)
{
    auto const sender = make_sender();
    begin(sender);
    auto const samples = ramp(16 * 500);
    SenderAudioFrame const block{48000, 16, 480, 123456789, samples.data(), 500 * 4};
    Quillolib_send_send_audio(sender.get(), &block);
    ASSERT_TRUE(heard(heard_at_begin + 1));
    auto const got = publisher.seen().sounds.back();
    EXPECT_EQ(got.head.format.rate, 48000);
    EXPECT_EQ(got.head.format.channels, 16);
    EXPECT_EQ(got.head.samples, 480);
    EXPECT_EQ(got.head.silent, 0u);
    EXPECT_EQ(got.head.timecode_100ns, 123456789);
    EXPECT_EQ(got.head.sample_index, sent * 480);
    ASSERT_EQ(got.samples.size(), 16u * 480);
    for (std::size_t channel = 0; channel < 16; ++channel)
        for (std::size_t at = 0; at < 480; ++at)
            ASSERT_EQ(got.samples[channel * 480 + at], samples[channel * 500 + at]);
}

TEST_F(sound, WithoutDataIsSilence)
{
    auto const sender = make_sender();
    begin(sender);
    auto const got = publisher.seen().sounds.back();
    EXPECT_EQ(got.head.silent, 1u);
    EXPECT_EQ(got.head.samples, 480);
    EXPECT_TRUE(got.samples.empty());
}

TEST_F(sound, ChangesItsFormatInTheMiddle)
{
    auto const sender = make_sender();
    begin(sender);
    auto const samples = ramp(64 * 4000);
    std::size_t count = heard_at_begin;
    for (auto const& [rate, channels, block] :
         {std::tuple{44100, 2, 441}, {22050, 1, 220}, {96000, 6, 960}, {768000, 64, 4000}}) {
        SenderAudioFrame const frame{rate, channels, block, 0, samples.data(), block * 4};
        Quillolib_send_send_audio(sender.get(), &frame);
        ASSERT_TRUE(heard(++count));
        auto const seen = publisher.seen();
        EXPECT_EQ(seen.sounds.back().head.format.rate, rate);
        EXPECT_EQ(seen.sounds.back().samples.size(), static_cast<std::size_t>(channels * block));
        EXPECT_EQ(seen.audio_formats.back().rate, rate);
        EXPECT_EQ(seen.audio_formats.back().channels, channels);
    }
}

TEST_F(sound, StaysUnreadWhileNobodyListens)
{
    publisher.behave([](auto& how) { how.want_audio = false; });
    auto const sender = make_sender();
    guarded_memory memory{480 * 2 * 4};
    memory.forbid();
    SenderAudioFrame const block{48000, 2, 480, 0, reinterpret_cast<float const*>(memory.start()), 480 * 4};
    for (int count = 0; count < 500; ++count)
        Quillolib_send_send_audio(sender.get(), &block);
    ASSERT_TRUE(publisher.wait_until([](record const& seen) {
        return !seen.audio_formats.empty() && seen.losses && seen.losses->audio_sends == 500;
    }));
    auto const seen = publisher.seen();
    EXPECT_TRUE(seen.sounds.empty());
    EXPECT_EQ(seen.losses->audio_no_room, 0u);
    EXPECT_EQ(seen.audio_formats[0].rate, 48000);
}

TEST_F(sound, IsDroppedButNeverWaitedForWhenThePublisherDoesNotRead)
{
    auto const sender = make_sender();
    begin(sender);
    publisher.behave([](auto& how) { how.read = false; });
    auto const samples = ramp(16 * 480);
    SenderAudioFrame const block{48000, 16, 480, 0, samples.data(), 480 * 4};
    constexpr std::uint64_t blocks = 2000; // 61 MB, far more than any buffer on the way
    for (std::uint64_t count = 0; count < blocks; ++count)
        Quillolib_send_send_audio(sender.get(), &block);
    publisher.behave([](auto& how) { how.read = true; });
    ASSERT_TRUE(publisher.wait_until(
        [&](record const& seen) { return seen.losses && seen.losses->audio_sends == sent + blocks; }));
    auto const seen = publisher.seen();
    EXPECT_GT(seen.losses->audio_no_room, blocks / 2);
    EXPECT_EQ(seen.sounds.size() - heard_at_begin + seen.losses->audio_no_room, blocks);
    // It goes on with the next block, and the count of samples tells what is missing.
    auto const count = seen.sounds.size();
    Quillolib_send_send_audio(sender.get(), &block);
    ASSERT_TRUE(heard(count + 1));
    EXPECT_EQ(publisher.seen().sounds.back().head.sample_index, (sent + blocks) * 480);
}

TEST_F(sound, ThatIsNoneDoesNoHarm)
{
    auto const sender = make_sender();
    begin(sender);
    float const one = 1;
    std::uint64_t bad = 0;
    for (auto const number : {0, -1, -2147483647 - 1, 2147483647, 1 << 30}) {
        for (auto const place :
             {&SenderAudioFrame::sampleRate, &SenderAudioFrame::channelCount, &SenderAudioFrame::sampleCount}) {
            SenderAudioFrame frame{48000, 2, 1, 0, &one, 4};
            frame.*place = number;
            Quillolib_send_send_audio(sender.get(), &frame);
            ++bad;
        }
    }
    Quillolib_send_send_audio(sender.get(), nullptr);
    ASSERT_TRUE(publisher.wait_until(
        [&](record const& seen) { return seen.losses && seen.losses->audio_sends == sent + bad; }));
    EXPECT_EQ(publisher.seen().losses->audio_refused, bad);
}

TEST_F(sound, IsPacedToRealTimeAndSaysWhenItIsDue)
{
    auto const sender = make_sender(false, true);
    begin(sender);
    auto const samples = ramp(2 * 220);
    SenderAudioFrame const block{22050, 2, 220, 0, samples.data(), 220 * 4};
    auto const start = steady::now();
    for (int count = 0; count < 30; ++count)
        Quillolib_send_send_audio(sender.get(), &block);
    auto const took = steady::now() - start;
    EXPECT_GE(took, std::chrono::nanoseconds{30 * 220 * 1'000'000'000ll / 22050});
    EXPECT_LT(took, 3s);
    ASSERT_TRUE(heard(heard_at_begin + 30));
    auto const seen = publisher.seen();
    if (seen.losses && seen.losses->audio_late)
        GTEST_SKIP() << "this machine was stopped for a tenth of a second";
    for (std::size_t at = heard_at_begin + 1; at < seen.sounds.size(); ++at)
        EXPECT_NEAR(static_cast<double>(seen.sounds[at].head.sent_ns - seen.sounds[at - 1].head.sent_ns), 220e9 / 22050,
                    1.0);
}

} // namespace quillo::test
