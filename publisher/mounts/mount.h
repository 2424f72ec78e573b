// A mount is what a path serves; a viewer is one receiver's own payloaders, fed by the mount's source. gst-rtsp-server
// asks the mount for a viewer on each DESCRIBE.
#pragma once

#include "publisher/gst_ptr.h"
#include "publisher/receivers.h"

#include <atomic>
#include <memory>
#include <string>

namespace quillo::publisher {

class viewer
{
  public:
    // The payloaders, "pay0" for pictures, "pay1" for sound, "pay2" for a key; floating, given away with this call.
    virtual GstElement* take_bin() = 0;
    // The pipeline is there: to be fed until stop().
    virtual void start() = 0;
    virtual void stop() = 0;
    // The receiver said PLAY: from now on live.
    virtual void play() = 0;
    // Adds to the description what the payloaders do not say.
    virtual void describe(GstSDPMessage& description) = 0;

    receiver& who() { return *who_; }
    // The source has ended before all was there that its description waits for: no use in waiting on.
    bool has_given_up() const { return given_up_; }
    // It is gone, although what answered it may stay for a while.
    void leave()
    {
        stop();
        all_->dismiss(who_);
    }

    viewer(std::shared_ptr<receivers> all, receiver_ptr who) : all_(std::move(all)), who_(std::move(who)) {}
    viewer(viewer const&) = delete;
    viewer& operator=(viewer const&) = delete;
    virtual ~viewer() { all_->dismiss(who_); }

  protected:
    // Ends the receiver in order: a goodbye in RTCP, then the connection.
    void say_goodbye();
    // Ends one that is not described yet.
    void give_up();

    element_ptr video_in_; // the appsrcs in the bin
    element_ptr audio_in_;
    element_ptr key_in_; // where there is one
    std::shared_ptr<receivers> const all_;
    receiver_ptr const who_;

  private:
    std::atomic<bool> given_up_{false};
};

class mount
{
  public:
    virtual ~mount() = default;
    // Null when there are too many already.
    virtual std::unique_ptr<viewer> open() = 0;
    virtual bool full() const = 0;
    virtual bool tcp_only() const = 0;
};

// What gst-rtsp-server wants for a path.
object_ptr<GstRTSPMediaFactory> make_factory(std::shared_ptr<mount> served);

// The mount behind a factory, null if it is none of ours.
mount const* mount_of(GstRTSPMediaFactory* factory);

// The viewer behind a media, null if it is none of ours.
viewer* viewer_of(GstRTSPMedia* media);

} // namespace quillo::publisher
