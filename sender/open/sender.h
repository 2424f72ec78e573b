// One live source: checks the host's records, keeps time, and leaves pictures and sound for the hand-over thread.
#pragma once

#include "sender/Quillolib_send.h"
#include "sender/open/hand_over.h"
#include "sender/open/pacing.h"

#include <sys/types.h>

#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace quillo::open {

class sender
{
  public:
    // Starts the hand-over thread, which looks for a publisher by itself. Throws std::invalid_argument without a name,
    // std::system_error when the system has no thread or descriptor left.
    explicit sender(SenderSettings const&);
    sender(sender const&) = delete;
    sender& operator=(sender const&) = delete;
    // Returns within two seconds.
    ~sender();

    // False in a child process, which has none of our threads: then nothing may be called.
    bool of_this_process() const;

    // Ends the hold on the picture before; holds the new one, if there is one, until the next call. With finish the new
    // one is finished with on return.
    void send_video(SenderVideoFrame const* frame, bool finish);
    void send_audio(SenderAudioFrame const&);

  private:
    void finish_held();

    bool const clock_video;
    bool const clock_audio;
    pid_t const owner;

    std::mutex clocks; // guards the two below, for moments
    video_clock pictures;
    audio_clock blocks;

    std::shared_ptr<hand_over> work; // shared with its thread, which may outlive a sender destroyed in a hurry
    std::future<void> ended;
    std::thread thread;
};

} // namespace quillo::open
