// Stands in the place of the sender library: its five functions record what they are given.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sender/Quillolib_send.h"

namespace quillo::test {

struct sent_video
{
    SenderVideoFrame frame; // data is the plug-in's buffer and may be gone
    std::vector<unsigned char> bytes;
};

struct sent_audio
{
    SenderAudioFrame frame;
    std::vector<float> samples; // planar, as sent; empty for silence
};

// Frames are kept unless the call log is quiet. Knobs are to be set while no clock thread runs.
class recording_sender
{
  public:
    static recording_sender& instance();

    // Forgets everything and sets every knob back.
    void reset();

    bool refuses = false;            // create gives no sender
    std::function<void()> on_create; // may throw
    std::function<void()> on_audio;  // called inside each audio send: [clock thread]

    // Audio sends beyond this many wait until let_audio_run().
    void hold_audio_after(std::size_t sends);
    void let_audio_run();

    std::vector<sent_video> videos() const;
    std::vector<sent_audio> audios() const;

    // Frames that changed between the send and the next video call, that is, while the library might read them.
    int disturbed_frames() const { return disturbed; }
    // Senders created and not destroyed.
    int living() const { return alive; }

    // The five functions.
    SenderHandle create(SenderSettings const& settings);
    void destroy(SenderHandle sender);
    void video(SenderHandle sender, SenderVideoFrame const* frame, char const* function);
    void audio(SenderHandle sender, SenderAudioFrame const& frame);

  private:
    void let_go();

    mutable std::mutex mutex;
    std::condition_variable changed;
    bool holds_audio = false;
    std::size_t audio_budget = 0;
    std::vector<sent_video> sent_videos;
    std::vector<sent_audio> sent_audios;

    // Touched by video calls only, of which the host makes one at a time.
    unsigned char const* held = nullptr;
    std::vector<unsigned char> held_bytes;
    std::atomic<int> disturbed{0};
    std::atomic<int> alive{0};
};

} // namespace quillo::test
