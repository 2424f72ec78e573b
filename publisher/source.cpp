#include "publisher/source.h"

#include "publisher/log.h"

#include <algorithm>
#include <ctime>

namespace quillo::publisher {

namespace {

constexpr source::ns oldest_arrival = 1'000'000'000; // what waited longer in the socket counts as just come
constexpr int filler_block_ms = 10;

} // namespace

std::int64_t monotonic_ns()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000ll + now.tv_nsec;
}

source::source(introduction who, std::string path, std::function<void()> wake)
    : who_(std::move(who)), path_(std::move(path)), wake_(std::move(wake))
{
    store_.set_format(pictures_);
}

source::ns source::arrival(std::int64_t sent_ns) const
{
    ns const now = monotonic_ns();
    return sent_ns > now || sent_ns < now - oldest_arrival ? now : sent_ns;
}

void source::video_format(protocol::video_format_body const& format)
{
    std::lock_guard const lock{mutex_};
    announced_ = format;
    if (is_no_picture(format))
        return;
    // With nobody there to be disturbed the announcement is enough.
    if (auto const shape = checked(format); shape && listeners_.empty())
        accept(*shape);
}

void source::audio_format(sound_format const& format)
{
    std::lock_guard const lock{mutex_};
    if (format == sound_)
        return;
    sound_ = format;
    for (auto* const who : listeners_)
        who->format(pictures_, sound_);
}

void source::accept(picture_format const& format)
{
    pending_.reset();
    if (format == pictures_)
        return;
    log::info(who_.name, ": now ", text(format));
    pictures_ = format;
    store_.set_format(format);
    last_.reset();
    for (auto* const who : listeners_)
        who->format(pictures_, sound_);
}

void source::consider(picture_format const& shape, ns now)
{
    if (shape == pictures_) {
        pending_.reset();
        return;
    }
    if (pending_ != shape) {
        pending_ = shape;
        pending_frames_ = 0;
        pending_since_ = now;
    }
    if (++pending_frames_ >= frames_to_accept || !last_ || last_is_filler_)
        accept(shape);
}

void source::video(video_item const& item)
{
    std::lock_guard const lock{mutex_};
    ++pictures_in_;
    ns const now = monotonic_ns();
    buffer_ptr picture;
    if (is_no_picture(item.picture.format)) {
        picture = store_.black();
    } else {
        auto const shape = checked(item.picture.format);
        consider(*shape, now);
        if (listeners_.empty())
            return;
        picture = store_.take(item.picture, *shape);
    }
    if (!picture)
        return;
    ns const came = arrival(item.sent_ns);
    last_is_filler_ = false;
    show(std::move(picture), item.repeat ? time_.repeated_picture(now) : time_.picture(item.timecode_100ns, came));
}

void source::show(buffer_ptr picture, ns time)
{
    GST_BUFFER_PTS(picture.get()) = static_cast<GstClockTime>(time);
    last_shown_ = monotonic_ns();
    last_ = std::move(picture);
    for (auto* const who : listeners_)
        who->picture(last_.get());
}

void source::audio(audio_item const& item)
{
    if (std::unique_lock const lock{mutex_}; item.format == sound_) {
        ++blocks_in_;
        if (listeners_.empty())
            return;
        auto const placed =
            item.silent ? time_.untimed_sound(arrival(item.sent_ns), item.samples, item.format.rate)
                        : time_.sound(item.timecode_100ns, arrival(item.sent_ns), item.samples, item.format.rate);
        if (!placed.late)
            give({item.format, item.samples, item.planar, placed.start, placed.follows});
        return;
    }
    // A sender announces a change first; one that does not is taken at its block's word.
    audio_format(item.format);
    audio(item);
}

void source::give(placed_sound const& block)
{
    for (auto* const who : listeners_)
        who->sound(block);
}

void source::losses(protocol::losses_body const& losses)
{
    std::lock_guard const lock{mutex_};
    losses_ = losses;
}

void source::close()
{
    std::lock_guard const lock{mutex_};
    closed_ = true;
    for (auto* const who : listeners_)
        who->ended();
}

void source::tick(ns now)
{
    std::lock_guard const lock{mutex_};
    if (listeners_.empty())
        return;
    if (pending_ && now - pending_since_ > pending_limit && now - last_shown_ > repeat_after)
        accept(*pending_);
    if (last_ ? now - last_shown_ >= repeat_after : now - listened_since_ >= black_after) {
        bool const filler = !last_ || last_is_filler_;
        if (auto picture = last_ ? restamped(last_.get(), now) : store_.black()) {
            show(std::move(picture), time_.repeated_picture(now));
            last_is_filler_ = filler;
        }
    }

    int const samples = std::max(1, sound_.rate * filler_block_ms / 1000);
    while (now - std::max(time_.sound_end(), listened_since_) >= fill_sound_after) {
        // A long gap is left, so that a rest of hours is not filled in one go.
        ns const due = std::max(time_.sound_end(), now - 2 * fill_sound_after);
        auto const placed = time_.untimed_sound(due, samples, sound_.rate);
        if (placed.late)
            break;
        give({sound_, samples, nullptr, placed.start, placed.follows});
    }
}

void source::add(listener& who)
{
    {
        std::lock_guard const lock{mutex_};
        ns const now = monotonic_ns();
        if (listeners_.empty())
            listened_since_ = now;
        listeners_.push_back(&who);
        listeners_count_ = listeners_.size();
        who.format(pictures_, sound_);
        if (closed_)
            who.ended();
        if (last_)
            who.picture(last_.get());
        // Sound has to begin somewhere, or a description waits for it.
        int const samples = std::max(1, sound_.rate * filler_block_ms / 1000);
        if (now - time_.sound_end() > fill_sound_after) {
            auto const placed = time_.untimed_sound(now, samples, sound_.rate);
            if (!placed.late)
                give({sound_, samples, nullptr, placed.start, placed.follows});
        }
    }
    wake_();
}

void source::remove(listener& who)
{
    {
        std::lock_guard const lock{mutex_};
        std::erase(listeners_, &who);
        listeners_count_ = listeners_.size();
        if (listeners_.empty()) {
            last_.reset();
            pending_.reset();
            store_.clear();
        }
    }
    wake_();
}

void source::hurry()
{
    {
        std::lock_guard const lock{mutex_};
        if (monotonic_ns() - last_shown_ < resting_after)
            return;
        last_shown_ = 0;
    }
    wake_();
}

void source::set_network_name(std::string const& name)
{
    std::lock_guard const lock{mutex_};
    network_name_ = name;
}

source::state source::current() const
{
    std::lock_guard const lock{mutex_};
    state result{network_name_, pictures_,       sound_, announced_.has_value(), 0, 0, 0, pictures_in_,
                 blocks_in_,    time_.anchors(), losses_};
    if (announced_) {
        result.fourcc = announced_->fourcc;
        result.aspect = announced_->aspect;
        result.frame_format = announced_->frame_format;
    }
    return result;
}

} // namespace quillo::publisher
