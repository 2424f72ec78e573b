#include "publisher/mounts/raw_mount.h"

#include "publisher/caps.h"
#include "publisher/log.h"
#include "publisher/mounts/raw_payloader.h"
#include "publisher/pipeline.h"
#include "publisher/sdp.h"
#include "publisher/sound_copy.h"

#include <gst/app/gstappsrc.h>

#include <atomic>
#include <utility>

namespace quillo::publisher {

namespace {

class raw_viewer : public viewer, listener
{
  public:
    raw_viewer(std::shared_ptr<source> of, std::shared_ptr<receivers> all, receiver_ptr who,
               std::shared_ptr<raw_form> form)
        : viewer(std::move(all), std::move(who)), source_(std::move(of)), form_(std::move(form))
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
    void picture(GstBuffer*) override {}
    void keyed_picture(GstBuffer* fill, GstBuffer* alpha) override;
    void sound(placed_sound const& block) override;
    void ended() override;
    pushed push(raw_form::pictures const& made);
    void begin_sound();

    std::shared_ptr<source> const source_;
    std::shared_ptr<raw_form> const form_;
    picture_format pictures_; // as described; once a picture was shown a viewer never sees another shape
    sound_format sound_;
    std::atomic<bool> listening_{false};
    bool ended_ = false;
    // Until PLAY one picture and one block are enough: they are what the description waits for.
    bool first_picture_ = false;
    bool first_block_ = false;
    bool sound_came_ = false;
    std::int64_t first_time_ns_ = 0; // of the first picture
};

GstElement* raw_viewer::take_bin()
{
    std::string const payloader = raw_payloader();
    // Sound is timed by its stamps: counting samples the payloader would add a block to every break.
    std::string text = "( appsrc name=video is-live=true format=time max-buffers=2 max-bytes=0 leaky-type=downstream"
                       " ! " +
                       payloader +
                       " name=pay0 pt=96 mtu=60000"
                       " appsrc name=audio is-live=true format=time max-buffers=50 max-bytes=0 leaky-type=downstream"
                       " ! rtpL24pay name=pay1 pt=97 mtu=60000 perfect-rtptime=false";
    if (form_->has_key())
        text += " appsrc name=key is-live=true format=time max-buffers=2 max-bytes=0 leaky-type=downstream"
                " ! " +
                payloader + " name=pay2 pt=98 mtu=60000";
    GstElement* const bin = gst_parse_launch((text + " )").c_str(), nullptr);
    video_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "video"));
    audio_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "audio"));
    if (form_->has_key())
        key_in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(bin), "key"));
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
    form_->describe(description, pictures_);
    describe_source(description, pictures_, source_->who().name);
}

void raw_viewer::format(picture_format const& pictures, sound_format const& sound)
{
    // Receivers keep what was described to them and would show garbage; they have to ask again.
    if ((first_picture_ && pictures != pictures_) || (first_block_ && sound != sound_))
        ended();
    if (!first_picture_) {
        pictures_ = pictures;
        auto const caps = form_->caps(pictures);
        gst_app_src_set_caps(GST_APP_SRC(video_in_.get()), caps.get());
        if (key_in_)
            gst_app_src_set_caps(GST_APP_SRC(key_in_.get()), caps.get());
    }
    if (!first_block_) {
        sound_ = sound;
        gst_app_src_set_caps(GST_APP_SRC(audio_in_.get()), s24be_caps(sound).get());
    }
}

void raw_viewer::ended()
{
    if (std::exchange(ended_, true))
        return;
    if (first_picture_ && first_block_)
        say_goodbye();
    else
        give_up();
}

pushed raw_viewer::push(raw_form::pictures const& made)
{
    if (!key_in_)
        return push_buffer(video_in_.get(), made.fill.get());
    // Both or neither: a picture with another one's key is worse than none, and fills that had queued up before the
    // key's end of the pipeline took anything would keep it out for good.
    if (!first_picture_ && (!has_started(video_in_.get()) || !has_started(key_in_.get())))
        return pushed::refused;
    if (is_full(video_in_.get()) || is_full(key_in_.get()))
        return pushed::in_place_of_another;
    auto const result = push_buffer(video_in_.get(), made.fill.get());
    return result == pushed::queued ? push_buffer(key_in_.get(), made.key.get()) : result;
}

void raw_viewer::keyed_picture(GstBuffer* fill, GstBuffer* alpha)
{
    if (first_picture_ && (ended_ || !who_->playing))
        return;
    auto const made = form_->make(pictures_, fill, alpha);
    if (!made.fill || (key_in_ && !made.key))
        return;
    switch (push(made)) {
    case pushed::queued:
        if (!std::exchange(first_picture_, true)) {
            first_time_ns_ = static_cast<std::int64_t>(GST_BUFFER_PTS(fill));
            begin_sound();
        }
        ++who_->frames_sent;
        break;
    case pushed::in_place_of_another:
        ++who_->frames_dropped;
        break;
    case pushed::refused:
        break;
    }
}

// With silence, at the first picture's time. Receivers take what comes first for simultaneous, and set the streams
// right one by one as reports come: until the last of them has come, a key would stand beside another picture's fill.
void raw_viewer::begin_sound()
{
    if (!first_picture_ || !sound_came_)
        return;
    if (auto const silence = as_s24be({sound_, sound_.rate / 100, nullptr, first_time_ns_, false}))
        first_block_ = push_buffer(audio_in_.get(), silence.get()) != pushed::refused;
}

void raw_viewer::sound(placed_sound const& block)
{
    sound_came_ = true;
    if (!first_block_)
        return begin_sound();
    if (ended_ || !who_->playing)
        return;
    auto const buffer = as_s24be(block);
    if (buffer && push_buffer(audio_in_.get(), buffer.get()) == pushed::in_place_of_another)
        ++who_->blocks_dropped;
}

} // namespace

bool raw_mount::full() const { return all_->full(source_->path(), name_, all_->limits().raw); }

std::unique_ptr<viewer> raw_mount::open()
{
    auto who = all_->admit(source_->path(), name_, all_->limits().raw);
    if (!who)
        return nullptr;
    std::lock_guard const lock{mutex_};
    auto form = form_.lock();
    if (!form) {
        form = make_();
        form_ = form;
    }
    return std::make_unique<raw_viewer>(source_, all_, std::move(who), std::move(form));
}

} // namespace quillo::publisher
