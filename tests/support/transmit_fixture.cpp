#include "tests/support/transmit_fixture.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace quillo::test {

namespace {

char first_context[] = "first";

// R, S, D, ...: the letter after the command in parentheses.
char state_of_thread(long id)
{
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/stat");
    std::string text;
    std::getline(file, text);
    auto const end_of_name = text.rfind(')');
    return end_of_name == std::string::npos ? '?' : text.at(end_of_name + 2);
}

} // namespace

TransmitTest::TransmitTest() : module(load_module_under_test())
{
    sender.reset();
    log.set_quiet(false);
    log.clear();
    EXPECT_EQ(module->entry()(0, kPrTrue, host.suites(), &functions), 0);
    parms.piSuites = host.suites();
}

TransmitTest::~TransmitTest()
{
    sender.let_audio_run();
    if (instance.ioPrivateInstanceData) {
        stop_clock();
        activate(false, false);
        functions.DisposeInstance(&parms, &instance);
    }
    functions.Shutdown(&parms);
    EXPECT_EQ(sender.disturbed_frames(), 0) << "a frame changed while the sender might read it";
    EXPECT_EQ(sender.living(), 0);
}

tmInstance TransmitTest::a_sequence()
{
    tmInstance sequence{};
    sequence.inInstanceID = 1;
    sequence.inPlayID = 42;
    sequence.inHasAudio = kPrTrue;
    sequence.inNumChannels = 2;
    sequence.inChannelLabels[0] = kPrAudioChannelLabel_FrontLeft;
    sequence.inChannelLabels[1] = kPrAudioChannelLabel_FrontRight;
    sequence.inAudioSampleType = kPrAudioSampleType_32BitFloat;
    sequence.inAudioSampleRate = 48000;
    sequence.inHasVideo = kPrTrue;
    sequence.inVideoWidth = 1280;
    sequence.inVideoHeight = 720;
    sequence.inVideoPARNum = 1;
    sequence.inVideoPARDen = 1;
    sequence.inVideoFrameRate = 10160640000;
    sequence.inVideoFieldType = prFieldsNone;
    return sequence;
}

tmPlaybackClock TransmitTest::a_clock()
{
    tmPlaybackClock clock{};
    clock.inClockCallback = &fake_host::clock;
    clock.inCallbackContext = first_context;
    clock.inStartTime = 300;
    clock.inPlayMode = quillo::host::playing;
    clock.inSpeed = 1.0f;
    clock.inInTime = 100;
    clock.inOutTime = 900;
    return clock;
}

void TransmitTest::start_up() { ASSERT_EQ(functions.Startup(&parms, &info), 0); }

void TransmitTest::create_instance()
{
    if (!parms.ioPrivatePluginData)
        start_up();
    ASSERT_EQ(functions.CreateInstance(&parms, &instance), 0);
    log.clear();
}

tmResult TransmitTest::activate(bool audio, bool video)
{
    return functions.ActivateDeactivate(&parms, &instance, PrActivationEvent_PlayerActivated, audio, video);
}

tmResult TransmitTest::start_clock() { return functions.StartPlaybackClock(&parms, &instance, &clock); }

tmResult TransmitTest::stop_clock() { return functions.StopPlaybackClock(&parms, &instance); }

tmResult TransmitTest::push(std::initializer_list<fake_picture*> pictures, PrTime time)
{
    std::vector<tmLabeledFrame> frames;
    for (fake_picture* const picture : pictures)
        frames.push_back({picture->hand(), nullptr});
    tmPushVideo push{};
    push.inTime = time;
    push.inPlayMode = quillo::host::playing;
    push.inFrames = frames.data();
    push.inFrameCount = frames.size();
    return functions.PushVideo(&parms, &instance, &push);
}

sent_video TransmitTest::send(fake_picture& picture, PrTime time)
{
    auto const before = sender.videos().size();
    EXPECT_EQ(push({&picture}, time), 0);
    auto const videos = sender.videos();
    EXPECT_EQ(videos.size(), before + 1);
    return videos.empty() ? sent_video{} : videos.back();
}

void TransmitTest::run_blocked(std::function<void()> const& blocking, std::function<void()> const& release)
{
    long const this_thread = syscall(SYS_gettid);
    std::atomic<bool> entered{false};
    std::thread helper([&] {
        while (!entered || state_of_thread(this_thread) != 'S')
            std::this_thread::yield();
        release();
    });
    entered = true;
    blocking();
    helper.join();
}

} // namespace quillo::test
