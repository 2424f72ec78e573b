// One transmit instance: the formats that it offers to the host, the clock thread that drives the host's playback and
// sends its audio, and the road of the pushed video frames.
#pragma once

#include <atomic>
#include <thread>

#include "Plugins/Plugins.AdobeCC.Transmit/SDKSuites.h"
#include "Plugins/Plugins.AdobeCC.Transmit/latest.h"
#include "sender/Quillolib_send.h"

// [host thread]: any thread of the host, one such call at a time, but for PushVideo, which may run beside
// StartPlaybackClock and StopPlaybackClock. Records passed in are the host's and are not kept.
// The host deactivates video and stops the clock before it disposes an instance: the destructor frees no picture buffer
// and ends the process if the clock thread was never joined.
class Quillo_TransmitInstance
{
  public:
    // The sender is borrowed and may be null.
    Quillo_TransmitInstance(tmInstance const* instance, SDKSuites const& host_suites, void* network_sender);
    ~Quillo_TransmitInstance();
    Quillo_TransmitInstance(Quillo_TransmitInstance const&) = delete;
    Quillo_TransmitInstance& operator=(Quillo_TransmitInstance const&) = delete;

    // [host thread] The one audio mode, whatever the index.
    tmResult QueryAudioMode(tmStdParms const* parms, tmInstance const* instance, csSDK_int32 index, tmAudioMode* mode);
    // [host thread] Four video modes, the preferred first; 1 while more follow.
    tmResult QueryVideoMode(tmStdParms const* parms, tmInstance const* instance, csSDK_int32 index, tmVideoMode* mode);
    // [host thread] Chooses the frame rate when video is on, frees the picture buffers when it is off.
    tmResult ActivateDeactivate(tmStdParms const* parms, tmInstance const* instance, PrActivationEvent event,
                                prBool audio_active, prBool video_active);
    // [host thread] Starts the clock thread; while it runs, only gives it the new records.
    tmResult StartPlaybackClock(tmStdParms const* parms, tmInstance const* instance, tmPlaybackClock const* clock);
    // [host thread] Joins the clock thread: the host's callback is not called after this.
    tmResult StopPlaybackClock(tmStdParms const* parms, tmInstance const* instance);
    // [host thread, beside the clock thread] Sends the frames and gives them back to the host.
    tmResult PushVideo(tmStdParms const* parms, tmInstance const* instance, tmPushVideo const* push);
    // [clock thread] Its body.
    void ThreadProc();

  private:
    // The four bytes VUYA, which the host takes for Rec. 709.
    static constexpr PrPixelFormat vuya = PrPixelFormat_VUYA_4444_8u_709;
    static constexpr PrPixelFormat bgra = PrPixelFormat_BGRA_4444_8u;

    struct FrameBuffer
    {
        unsigned char* data = nullptr; // malloc's; the sender reads it until the next video call
        int capacity = 0;              // bytes

        void grow_to(long long size); // contents beyond the old capacity are not set
        void release();
    };

    // The host's records as StartPlaybackClock saw them.
    struct record_copies
    {
        tmInstance instance;
        tmPlaybackClock clock;
    };

    void audio_road();
    void clock_only_road();

    SenderVideoFrame converted_frame(PPixHand picture, prFieldType field_type);
    static SenderVideoFrame black_frame(FrameBuffer& buffer);

    SDKSuites const suites;
    std::atomic<bool> audioActive{false}; // host thread; the clock thread reads it once, when it starts
    bool videoActive = false;             // host thread
    int frameRateN = 30000;               // host thread, as all that follows but for what is said
    int frameRateD = 1001;
    float aspectRatio = 16.0f / 9.0f;

    std::thread clock_thread;
    std::atomic<bool> stopRequested{false}; // host thread tells the clock thread, which polls it

    int bufferIndex = 0; // the buffer filled last; the other one may be filled next
    FrameBuffer buffers[2];

    SenderHandle const sender; // borrowed; both threads use it at the same time

    // Set once: host time in ticks becomes 100 ns units by scale(ticks, timeScaleNum, timeScaleDen).
    PrTime ticksPerSecond = 0;
    int timeScaleNum = 0;
    int timeScaleDen = 0;

    // A start while the clock thread runs must reach it without a lock and without a torn record. The host thread
    // gives, the clock thread takes anew at every use, so that it follows the last start; the join makes the host
    // thread alone.
    quillo::latest<record_copies> copies;
};
