#include "publisher/encoded_feed.h"

#include "publisher/h264_signal.h"
#include "publisher/log.h"
#include "publisher/sound_copy.h"

#include <algorithm>
#include <utility>

namespace quillo::publisher {

namespace {

bool is_stale(stale_items& items, GstSample* sample)
{
    auto const now = std::chrono::steady_clock::now().time_since_epoch();
    return items.is_stale(now - std::chrono::nanoseconds{GST_BUFFER_PTS(gst_sample_get_buffer(sample))}, now);
}

} // namespace

void encoded_feed::add(encoded_viewer& viewer)
{
    std::lock_guard const lock{viewers_mutex_};
    viewers_.push_back(&viewer);
    if (ended_)
        viewer.ended();
}

void encoded_feed::remove(encoded_viewer& viewer)
{
    std::lock_guard const lock{viewers_mutex_};
    std::erase(viewers_, &viewer);
}

bool encoded_feed::has_viewers() const
{
    std::lock_guard const lock{viewers_mutex_};
    return !viewers_.empty();
}

void encoded_feed::request_key_frame()
{
    std::lock_guard const lock{pipelines_mutex_};
    force_key_frame();
}

void encoded_feed::force_key_frame()
{
    if (!video_)
        return;
    gst_element_send_event(video_->out(), gst_video_event_new_upstream_force_key_unit(GST_CLOCK_TIME_NONE, TRUE, 0));
    last_forced_ = std::chrono::steady_clock::now();
}

void encoded_feed::format(picture_format const& pictures, sound_format const& sound)
{
    std::lock_guard const lock{pipelines_mutex_};
    try {
        // A new shape is a new encoder; the viewers go on with its first key frame.
        if (pictures_ != pictures) {
            video_.reset();
            pictures_ = pictures;
            video_ = std::make_unique<pipeline>(encoding_pipeline(choice_, pictures),
                                                [this, pictures](GstSample* unit) { distribute_unit(unit, pictures); });
        }
        if (!sound_ || sound_->rate != sound.rate) {
            audio_.reset();
            audio_ = std::make_unique<pipeline>(opus_pipeline(sound.rate),
                                                [this](GstSample* packet) { distribute_packet(packet); });
        }
        sound_ = sound;
    } catch (std::runtime_error const& error) {
        log::error("cannot encode: ", error.what());
    }
}

void encoded_feed::picture(GstBuffer* fill)
{
    std::lock_guard const lock{pipelines_mutex_};
    if (!video_)
        return;
    // By the clock: encoders count pictures, of which a resting host has few.
    if (key_frame_wanted_.exchange(false) || std::chrono::steady_clock::now() - last_forced_ >= key_frame_interval)
        force_key_frame();
    if (video_->push(fill) == pushed::in_place_of_another)
        ++lost_pictures_;
}

void encoded_feed::sound(placed_sound const& block)
{
    std::lock_guard const lock{pipelines_mutex_};
    if (!audio_)
        return;
    auto const buffer = as_stereo(block);
    if (buffer && audio_->push(buffer.get()) == pushed::in_place_of_another)
        ++lost_packets_;
}

void encoded_feed::ended()
{
    std::lock_guard const lock{viewers_mutex_};
    ended_ = true;
    for (auto* const viewer : viewers_)
        viewer->ended();
}

void encoded_feed::distribute_unit(GstSample* unit, picture_format const& pictures)
{
    GstBuffer* const buffer = gst_sample_get_buffer(unit);
    bool const key = !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
    // A key frame takes an encoder as long as it takes, and is what everybody waits for.
    bool const stale = !key && is_stale(stale_units_, unit);
    if (stale)
        key_frame_wanted_ = units_left_out_ = true;
    // Without this picture those that build on it are worth nothing.
    without_reference_ = stale || (without_reference_ && !key);
    if (without_reference_) {
        ++lost_pictures_;
        return;
    }
    sample_ptr signalled;
    if (key)
        signalled = adopt<sample_ptr>(
            gst_sample_new(with_signal(buffer, pictures).get(), gst_sample_get_caps(unit), nullptr, nullptr));
    std::lock_guard const lock{viewers_mutex_};
    for (auto* const viewer : viewers_)
        viewer->access_unit(key ? signalled.get() : unit, key);
    if (std::exchange(units_left_out_, false))
        go_on();
}

void encoded_feed::distribute_packet(GstSample* packet)
{
    if (is_stale(stale_packets_, packet)) {
        ++packets_left_out_;
        ++lost_packets_;
        return;
    }
    std::lock_guard const lock{viewers_mutex_};
    for (auto* const viewer : viewers_)
        viewer->opus_packet(packet);
    if (auto const left_out = std::exchange(packets_left_out_, 0); left_out > 0) {
        log::warning("this machine stood still: ", left_out, " packets of encoded sound were too late to be sent");
        go_on();
    }
}

void encoded_feed::go_on()
{
    for (auto* const viewer : viewers_)
        viewer->held_up();
}

} // namespace quillo::publisher
