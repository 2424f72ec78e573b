#include "tests/tools/stand_in_host/test_module.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED test_module* quillo_test_module()
{
    static test_module the_module;
    return &the_module;
}

namespace {

test_module& self() { return *quillo_test_module(); }

SPBasicSuite* basic;
PrSDKPPixSuite const* ppix;
PrSDKTimeSuite const* times;
quillo::host::playmod_audio_suite const* audio;

struct instance
{
    bool audio_active = false;
    std::thread clock;
    std::atomic<bool> stop = false;
    std::atomic<long> blocks = 0; // that the clock has moved on by
    std::mutex renewing;          // guards the record
    tmPlaybackClock clock_record{};
    tmInstance record{};
    PPixHand held = nullptr;
};

class inside
{
  public:
    explicit inside(char const* name)
    {
        if (self().record.entered.exchange(true))
            ++self().record.overlaps;
        if (std::string(name) != "PushVideo") {
            std::lock_guard const lock(self().record.mutex);
            self().record.calls.emplace_back(name);
        }
        if (self().behaviour.throws_in == name)
            throw std::runtime_error("told to");
    }
    ~inside() { self().record.entered = false; }
};

instance& of(tmInstance const* record) { return *static_cast<instance*>(record->ioPrivateInstanceData); }

template <typename Suite>
void acquire(char const* name, int version, Suite const*& suite)
{
    void const* table = nullptr;
    basic->AcquireSuite(name, version, &table);
    suite = static_cast<Suite const*>(table);
}

tmResult start_up(tmStdParms* parameters, tmPluginInfo* info)
{
    inside const here("Startup");
    static constexpr char16_t name[] = u"Test \u00e9\u20ac\U0001F600";
    for (std::size_t k = 0; k < std::size(name); ++k)
        info->outDisplayName[k] = name[k];
    info->outAudioAvailable = info->outClockAvailable = info->outVideoAvailable = kPrTrue;
    basic = parameters->piSuites->utilFuncs->getSPBasicSuite();
    acquire("Premiere PPix Suite", 1, ppix);
    acquire("Premiere Time Suite", 1, times);
    acquire("Premiere Playmod Audio Suite", 4, audio);
    parameters->ioPrivatePluginData = &self();
    return 0;
}

tmResult shut_down(tmStdParms*)
{
    inside const here("Shutdown");
    basic->ReleaseSuite("Premiere PPix Suite", 1);
    basic->ReleaseSuite("Never Acquired Suite", 9);
    return 0;
}

tmResult needs_reset(tmStdParms const*, prBool*) { return 0; }

tmResult create(tmStdParms const*, tmInstance* record)
{
    inside const here("CreateInstance");
    {
        std::lock_guard const lock(self().record.mutex);
        self().record.instances.push_back(*record);
    }
    record->ioPrivateInstanceData = new instance;
    return 0;
}

tmResult dispose(tmStdParms const*, tmInstance* record)
{
    inside const here("DisposeInstance");
    delete &of(record);
    record->ioPrivateInstanceData = nullptr;
    return 0;
}

tmResult audio_mode(tmStdParms const*, tmInstance const* record, csSDK_int32, tmAudioMode* mode)
{
    inside const here("QueryAudioMode");
    mode->outAudioSampleRate = record->inAudioSampleRate;
    mode->outNumChannels = record->inNumChannels;
    return 0;
}

tmResult video_mode(tmStdParms const*, tmInstance const*, csSDK_int32 index, tmVideoMode* mode)
{
    inside const here("QueryVideoMode");
    auto const& formats = self().behaviour.formats;
    auto const k = static_cast<std::size_t>(index);
    if (k < formats.size()) {
        mode->outFieldType = prFieldsAny;
        mode->outPixelFormat = formats[k];
    }
    return k + 1 < formats.size() ? tmResult_ContinueIterate : 0;
}

tmResult activate(tmStdParms const*, tmInstance const* record, PrActivationEvent, prBool with_audio, prBool with_video)
{
    inside const here(with_video ? "Activate" : "Deactivate");
    instance& i = of(record);
    i.audio_active = with_audio != 0;
    if (!with_video && i.held != nullptr) {
        ppix->Dispose(i.held);
        i.held = nullptr;
    }
    return 0;
}

void note_audio(prSuiteError error)
{
    std::lock_guard const lock(self().record.mutex);
    self().record.audio_errors.push_back(error);
}

void run_clock(instance& i)
{
    test_behaviour const& b = self().behaviour;
    PrTime second = 0;
    times->GetTicksPerSecond(&second);
    tmPlaybackClock const c = i.clock_record;
    bool const sound = b.pulls_audio && i.audio_active && audio != nullptr;
    PrPlayID const player = i.record.inPlayID;
    auto const rate = static_cast<int>(i.record.inAudioSampleRate + 0.5f);
    auto const block = static_cast<csSDK_uint32>(rate * b.block_ms / 1000);
    csSDK_uint32 const channels = std::max(i.record.inNumChannels, 2u);
    std::vector<std::vector<float>> samples(channels, std::vector<float>(block));
    std::vector<float*> pointers;
    for (auto& channel : samples)
        pointers.push_back(channel.data());

    namespace host = quillo::host;
    if (sound) {
        note_audio(host::set_up_audio(*audio, player, c.inPlayMode == playmode_Scrubbing, static_cast<float>(rate),
                                      static_cast<csSDK_int32>(block)));
        note_audio(host::start_audio(*audio, player, c.inInTime, c.inOutTime, c.inStartTime, c.inLoop, c.inSpeed));
    }
    bool negative = b.negative_increment;
    while (!i.stop) {
        std::this_thread::sleep_for(std::chrono::microseconds(b.block_wait_us));
        if (b.clock_stands)
            continue;
        if (sound) {
            PrTime time = 0;
            prSuiteError const error = host::next_audio(*audio, player, pointers.data(), block, time);
            note_audio(error);
            if (error == 0 && b.on_audio)
                b.on_audio(pointers.data(), channels, block, time);
        }
        tmPlaybackClock renewed;
        {
            std::lock_guard const lock(i.renewing);
            renewed = i.clock_record;
        }
        renewed.inClockCallback(renewed.inCallbackContext, second * b.block_ms / 1000);
        ++i.blocks;
        if (std::exchange(negative, false))
            renewed.inClockCallback(renewed.inCallbackContext, -1);
    }
    if (sound)
        note_audio(host::stop_audio(*audio, player));
}

tmResult start_clock(tmStdParms const*, tmInstance const* record, tmPlaybackClock const* clock)
{
    inside const here("StartPlaybackClock");
    instance& i = of(record);
    {
        std::lock_guard const lock(self().record.mutex);
        self().record.clocks.push_back(*clock);
    }
    {
        std::lock_guard const lock(i.renewing);
        i.clock_record = *clock;
    }
    if (i.clock.joinable()) // a start while the clock runs
        return 0;
    i.stop = false;
    i.record = *record;
    i.clock = std::thread([&i] { run_clock(i); });
    return 0;
}

tmResult stop_clock(tmStdParms const*, tmInstance const* record)
{
    inside const here("StopPlaybackClock");
    instance& i = of(record);
    i.stop = true;
    if (i.clock.joinable())
        i.clock.join();
    if (self().behaviour.callback_after_stop)
        std::thread([c = i.clock_record] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            c.inClockCallback(c.inCallbackContext, 1);
        }).detach();
    return 0;
}

tmResult push(tmStdParms const*, tmInstance const* record, tmPushVideo const* pushed)
{
    inside const here("PushVideo");
    test_behaviour const& b = self().behaviour;
    instance& i = of(record);
    for (csSDK_size_t k = 0; k < pushed->inFrameCount; ++k) {
        PPixHand const frame = pushed->inFrames[k].inFrame;
        test_picture picture{};
        picture.time = pushed->inTime;
        picture.mode = pushed->inPlayMode;
        char* pixels = nullptr;
        ppix->GetPixels(frame, PrPPixBufferAccess_ReadOnly, &pixels);
        picture.pixels = reinterpret_cast<unsigned char*>(pixels);
        ppix->GetBounds(frame, &picture.bounds);
        ppix->GetRowBytes(frame, &picture.row_bytes);
        ppix->GetPixelFormat(frame, &picture.format);
        ppix->GetPixelAspectRatio(frame, &picture.aspect_n, &picture.aspect_d);
        if (b.on_push)
            b.on_push(picture);
        if (b.disposal == test_behaviour::with_next_push) {
            if (i.held != nullptr)
                ppix->Dispose(i.held);
            i.held = frame;
        } else if (b.disposal != test_behaviour::never) {
            ppix->Dispose(frame);
        }
        if (b.disposal == test_behaviour::twice)
            ppix->Dispose(frame);
    }
    for (long const end = i.blocks + b.push_blocks; i.clock.joinable() && i.blocks < end;)
        std::this_thread::sleep_for(std::chrono::microseconds(b.block_wait_us));
    return 0;
}

} // namespace

EXPORTED tmResult xTransmitEntry(csSDK_int32, prBool load, piSuitesPtr, tmModule* table)
{
    inside const here(load ? "load" : "unload");
    if (load)
        *table = {start_up,   shut_down,  nullptr,  needs_reset, create,     dispose,
                  audio_mode, video_mode, activate, start_clock, stop_clock, push};
    return 0;
}
