#include "publisher/mounts/raw_mount.h"

#include "publisher/caps.h"
#include "publisher/log.h"
#include "publisher/pipeline.h"
#include "publisher/sdp.h"
#include "publisher/sound_copy.h"

#include <atomic>
#include <sstream>
#include <utility>

namespace quillo::publisher {

namespace {

constexpr char const* mount_name = "raw";

class raw_viewer : public viewer, listener
{
  public:
    raw_viewer(std::shared_ptr<source> of, std::shared_ptr<receivers> all, receiver_ptr who)
        : viewer(std::move(all), std::move(who)), source_(std::move(of)), shape_(source_->current())
    {
    }

    ~raw_viewer() override { stop(); }

    GstElement* take_bin() override;
    void start() override;
    void stop() override;
    void play() override { who_->playing = true; }
    void describe(GstSDPMessage& description) override;

  private:
    void format(picture_format const& pictures, sound_format const& sound) override;
    void picture(GstBuffer* fill) override;
    void sound(placed_sound const& block) override;
    void ended() override;

    std::shared_ptr<source> const source_;
    source::state const shape_; // as described; a viewer never sees another one
    std::atomic<bool> listening_{false};
    bool ended_ = false;
    // Until PLAY one picture and one block are enough: they are what the description waits for.
    bool first_picture_ = false;
    bool first_block_ = false;
};

GstElement* raw_viewer::take_bin()
{
    std::ostringstream text;
    text << "( appsrc name=video is-live=true format=time max-buffers=2 max-bytes=0 leaky-type=downstream"
            " ! rtpvrawpay name=pay0 pt=96 mtu=60000"
            " appsrc name=audio is-live=true format=time max-buffers=50 max-bytes=0 leaky-type=downstream"
            " caps=\"audio/x-raw,format=S24BE,layout=interleaved,rate="
         << shape_.sound.rate << ",channels=" << shape_.sound.channels;
    if (shape_.sound.channels > 2)
        text << ",channel-mask=(bitmask)0x0";
    text << "\" ! rtpL24pay name=pay1 pt=97 mtu=60000 )";
    GstElement* const bin = gst_parse_launch(text.str().c_str(), nullptr);
    video_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "video"));
    audio_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "audio"));
    g_object_set(video_in_.get(), "caps", picture_caps(shape_.pictures).get(), nullptr);
    return bin;
}

void raw_viewer::start()
{
    if (!listening_.exchange(true))
        source_->add(*this);
}

void raw_viewer::stop()
{
    if (listening_.exchange(false))
        source_->remove(*this);
}

void raw_viewer::describe(GstSDPMessage& description)
{
    describe_raw(description, shape_.pictures);
    describe_source(description, shape_.pictures, source_->who().name);
}

void raw_viewer::format(picture_format const& pictures, sound_format const& sound)
{
    if (ended_ || (pictures == shape_.pictures && sound == shape_.sound))
        return;
    // Receivers keep what was described to them and would show garbage; they have to ask again.
    ended();
}

void raw_viewer::ended()
{
    if (!std::exchange(ended_, true))
        say_goodbye();
}

void raw_viewer::picture(GstBuffer* fill)
{
    if (ended_ || (first_picture_ && !who_->playing))
        return;
    first_picture_ = true;
    ++who_->frames_sent;
    if (!push_buffer(video_in_.get(), fill)) {
        --who_->frames_sent;
        ++who_->frames_dropped;
    }
}

void raw_viewer::sound(placed_sound const& block)
{
    if (ended_ || (first_block_ && !who_->playing))
        return;
    first_block_ = true;
    if (auto const buffer = as_s24be(block))
        push_buffer(audio_in_.get(), buffer.get());
}

} // namespace

std::unique_ptr<viewer> raw_mount::open()
{
    auto who = all_->admit(source_->path(), mount_name, receivers::max_raw);
    return who ? std::make_unique<raw_viewer>(source_, all_, std::move(who)) : nullptr;
}

} // namespace quillo::publisher
