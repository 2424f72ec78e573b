#include "publisher/mounts/encoded_mount.h"

#include "publisher/log.h"
#include "publisher/sdp.h"
#include "publisher/unit_queue.h"

#include <gst/app/gstappsrc.h>

#include <atomic>
#include <deque>

namespace quillo::publisher {

namespace {

constexpr char const* mount_name = "default";
constexpr GstClockTime longest_queue = 500 * GST_MSECOND;
constexpr GstClockTime short_queue = 100 * GST_MSECOND;
constexpr GstClockTime packet_time = 10 * GST_MSECOND; // of Opus
constexpr std::size_t most_early = 100;

GstClockTime time_of(GstSample* sample) { return GST_BUFFER_PTS(gst_sample_get_buffer(sample)); }

class h264_viewer : public viewer, encoded_viewer
{
  public:
    h264_viewer(std::shared_ptr<encoded_mount> of, std::shared_ptr<receivers> all, receiver_ptr who)
        : viewer(std::move(all), std::move(who)), mount_(std::move(of))
    {
    }

    ~h264_viewer() override { stop(); }

    GstElement* take_bin() override;
    void start() override;
    void stop() override;
    void play() override;
    void describe(GstSDPMessage& description) override;

  private:
    void access_unit(GstSample* unit, bool key) override;
    void opus_packet(GstSample* packet) override;
    void held_up() override { who_->held_up(); }
    void ended() override;

    void begin_sound();

    std::shared_ptr<encoded_mount> const mount_;
    std::atomic<bool> attached_{false};
    unit_queue units_{longest_queue, short_queue};
    std::atomic<bool> first_unit_{false};
    GstClockTime begin_ = 0; // of the first unit
    bool first_packet_ = false;
    std::deque<sample_ptr> early_; // packets that wait for the first unit
};

GstElement* h264_viewer::take_bin()
{
    GstElement* const bin =
        gst_parse_launch("( appsrc name=video is-live=true format=time max-bytes=0 max-buffers=0"
                         " ! rtph264pay name=pay0 pt=96 mtu=1400 config-interval=0"
                         " appsrc name=audio is-live=true format=time max-bytes=0 max-buffers=50 leaky-type=downstream"
                         " ! rtpopuspay name=pay1 pt=97 mtu=1400 )",
                         nullptr);
    video_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "video"));
    audio_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "audio"));
    return bin;
}

void h264_viewer::start()
{
    if (!attached_.exchange(true))
        mount_->attach(*this);
}

void h264_viewer::stop()
{
    if (attached_.exchange(false))
        mount_->detach(*this);
}

void h264_viewer::play()
{
    units_.wait_for_key();
    who_->playing = true;
    mount_->request_key_frame();
}

void h264_viewer::describe(GstSDPMessage& description)
{
    describe_source(description, mount_->of().current().pictures, mount_->of().who().name);
}

void h264_viewer::access_unit(GstSample* unit, bool key)
{
    GstAppSrc* const in = GST_APP_SRC(video_in_.get());
    if (!who_->playing) {
        // What the description waits for; live begins with another key frame.
        if (!first_unit_ && key) {
            begin_ = time_of(unit);
            first_unit_ = gst_app_src_push_sample(in, unit) == GST_FLOW_OK;
            begin_sound();
        }
        return;
    }
    units_.push(in, unit, key, *who_);
}

void h264_viewer::opus_packet(GstSample* packet)
{
    if (first_packet_ && who_->playing) {
        if (push_sample(audio_in_.get(), packet) == pushed::in_place_of_another)
            ++who_->blocks_dropped;
    } else if (!first_packet_) {
        early_.push_back(retain(packet));
        begin_sound();
    }
}

// Receivers take the delay of what comes first for that of all, and keep sound and picture apart by the difference: so
// both begin at one time, although the encoder of pictures needs longer to start.
void h264_viewer::begin_sound()
{
    if (early_.size() > most_early)
        early_.pop_front();
    while (first_unit_ && !early_.empty() && time_of(early_.front().get()) + packet_time <= begin_)
        early_.pop_front();
    if (!first_unit_ || early_.empty())
        return;
    first_packet_ = push_sample(audio_in_.get(), early_.front().get()) != pushed::refused;
    early_.clear();
}

void h264_viewer::ended()
{
    if (first_unit_ && first_packet_)
        say_goodbye();
    else
        give_up();
}

} // namespace

bool encoded_mount::full() const { return all_->full(source_->path(), mount_name, all_->limits().encoded); }

std::unique_ptr<viewer> encoded_mount::open()
{
    auto who = all_->admit(source_->path(), mount_name, all_->limits().encoded);
    return who ? std::make_unique<h264_viewer>(shared_from_this(), all_, std::move(who)) : nullptr;
}

void encoded_mount::attach(encoded_viewer& who)
{
    std::lock_guard const lock{mutex_};
    if (feed_) {
        feed_->add(who);
        feed_->request_key_frame();
        source_->hurry();
        return;
    }
    feed_ = std::make_unique<encoded_feed>(choice_);
    feed_->add(who);
    source_->add(*feed_);
}

void encoded_mount::detach(encoded_viewer& who)
{
    std::lock_guard const lock{mutex_};
    if (!feed_)
        return;
    feed_->remove(who);
    if (!feed_->has_viewers()) {
        source_->remove(*feed_);
        lost_before_ = lost_before_ + feed_->lost();
        feed_.reset();
    }
}

encoder_losses encoded_mount::lost() const
{
    std::lock_guard const lock{mutex_};
    return feed_ ? lost_before_ + feed_->lost() : lost_before_;
}

void encoded_mount::request_key_frame()
{
    std::lock_guard const lock{mutex_};
    if (feed_)
        feed_->request_key_frame();
    source_->hurry();
}

} // namespace quillo::publisher
