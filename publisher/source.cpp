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
    : path_(std::move(path)), who_(std::move(who)), wake_(std::move(wake))
{
    store_.set_format(pictures_);
}

introduction source::who() const
{
    std::lock_guard const lock{mutex_};
    return who_;
}

void source::wake() const
{
    std::function<void()> call;
    {
        std::lock_guard const lock{mutex_};
        call = wake_;
    }
    call();
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
    sound_announced_ = true;
    if (format != sound_) {
        sound_ = format;
        for (auto* const who : listeners_)
            who->format(pictures_, sound_);
    }
    begin_sound(monotonic_ns());
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
    last_alpha_.reset();
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
    buffer_ptr picture, alpha;
    if (is_no_picture(item.picture.format)) {
        picture = store_.black();
    } else {
        auto const shape = checked(item.picture.format);
        consider(*shape, now);
        if (listeners_.empty())
            return;
        picture = store_.take(item.picture, *shape);
        alpha = store_.take_alpha(item.picture, *shape);
    }
    if (!picture)
        return;
    ns const came = arrival(item.sent_ns);
    last_is_filler_ = false;
    ns const placed = item.repeat ? time_.repeated_picture(now) : time_.picture(item.timecode_100ns, came);
    if (!item.repeat)
        offsets_.picture(came, placed, monotonic_ns());
    show(std::move(picture), std::move(alpha), placed);
}

void source::show(buffer_ptr picture, buffer_ptr alpha, ns time)
{
    GST_BUFFER_PTS(picture.get()) = static_cast<GstClockTime>(time);
    last_shown_ = monotonic_ns();
    last_ = std::move(picture);
    last_alpha_ = std::move(alpha);
    for (auto* const who : listeners_)
        who->keyed_picture(last_.get(), last_alpha_.get());
}

void source::audio(audio_item const& item)
{
    if (std::unique_lock const lock{mutex_}; item.format == sound_) {
        ++blocks_in_;
        last_block_ = monotonic_ns();
        sound_rests_ = false;
        if (listeners_.empty())
            return;
        ns const end = time_.sound_end();
        auto const placed =
            item.silent ? time_.untimed_sound(arrival(item.sent_ns), item.samples, item.format.rate)
                        : time_.sound(item.timecode_100ns, arrival(item.sent_ns), item.samples, item.format.rate);
        if (placed.late) {
            // Those behind the silence that a stream begins with are nobody's loss.
            blocks_displaced_ += before_ != before::nothing;
            return;
        }
        if (before_ == before::silence || (before_ == before::sound && !placed.follows))
            ++sound_breaks_;
        before_ = before::sound;
        bool const filled = fill_gap(end, placed.start);
        give({item.format, item.samples, item.planar, placed.start, placed.follows || filled});
        if (!item.silent)
            offsets_.sound(arrival(item.sent_ns), placed.start);
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

// Players take a short gap for jitter, and are ahead by it from then on.
bool source::fill_gap(ns from, ns to)
{
    if (from == 0 || to <= from || to - from > longest_filled_gap)
        return false;
    if (auto const samples = static_cast<int>((to - from) * sound_.rate / 1'000'000'000); samples > 0)
        give({sound_, samples, nullptr, from, true});
    return true;
}

void source::losses(protocol::losses_body const& losses)
{
    std::lock_guard const lock{mutex_};
    losses_ = losses;
}

void source::go_away()
{
    std::lock_guard const lock{mutex_};
    away_ = true;
    pending_.reset();
    if (listeners_.empty())
        return;
    for (auto* const who : listeners_)
        who->away();
    show_slate(monotonic_ns());
    sound_rests_ = true;
}

void source::come_back(introduction who, std::function<void()> wake)
{
    {
        std::lock_guard const lock{mutex_};
        who_ = std::move(who);
        std::swap(wake_, wake);
        away_ = false;
        ++senders_;
        announced_.reset();
        losses_ = {};
        offsets_.reset();
    }
    wake(); // the one before, which need not wait any longer
}

void source::close()
{
    std::lock_guard const lock{mutex_};
    closed_ = true;
    // Whoever still waits for a first picture is not left waiting.
    if (!listeners_.empty() && !last_)
        show_black(monotonic_ns());
    for (auto* const who : listeners_)
        who->ended();
}

void source::show_black(ns now)
{
    auto picture = store_.black();
    if (!picture)
        return;
    show(std::move(picture), nullptr, time_.repeated_picture(now));
    last_is_filler_ = true;
}

void source::show_slate(ns now)
{
    auto slate = last_ ? store_.slate(last_.get()) : store_.black();
    if (!slate)
        return;
    show(std::move(slate), nullptr, time_.repeated_picture(now));
    last_is_filler_ = true;
}

void source::repeat(ns now) { show(restamped(last_.get(), now), std::move(last_alpha_), time_.repeated_picture(now)); }

bool source::fill_sound(ns from)
{
    int const samples = std::max(1, sound_.rate * filler_block_ms / 1000);
    auto const placed = time_.untimed_sound(from, samples, sound_.rate);
    if (placed.late)
        return false;
    if (before_ == before::sound)
        before_ = before::silence;
    give({sound_, samples, nullptr, placed.start, placed.follows});
    return true;
}

// Sound has to begin somewhere, or a description waits for it; but in the right shape, if that is about to be known.
void source::begin_sound(ns now)
{
    if (sound_announced_ && !listeners_.empty() && now - time_.sound_end() > fill_sound_after)
        fill_sound(now);
}

void source::tick(ns now)
{
    std::lock_guard const lock{mutex_};
    if (listeners_.empty())
        return;
    if (pending_ && now - pending_since_ > pending_limit && now - last_shown_ > repeat_after)
        accept(*pending_);
    bool const has_picture = announced_ && !is_no_picture(*announced_);
    if (last_ && now - last_shown_ >= repeat_after)
        repeat(now);
    else if (!last_ && now - listened_since_ >= (has_picture ? overdue_after : black_after))
        show_black(now);

    ns const heard = std::max({time_.sound_end(), listened_since_, last_block_});
    // A host that stood still with this machine has its sound to say yet, and may be a moment later to wake. Once: on a
    // machine that does so again and again silence must begin too.
    ns const ticked = std::exchange(last_tick_, now);
    if (ticked != 0 && now - ticked > stood_still_after && awake_since_ < heard)
        awake_since_ = now;
    // Silence keeps pace once it has begun: were it late, receivers would take its delay for the network's and set the
    // sound after it apart from the picture. Blocks that come are no rest, even when their place lies far behind now:
    // filled up to now they would all be late, for good.
    if (now - std::max(heard, awake_since_) >= fill_sound_after)
        sound_rests_ = true;
    while (sound_rests_ && now >= time_.sound_end())
        // Of a long gap only the end is filled.
        if (!fill_sound(std::max(time_.sound_end(), now - 2 * fill_sound_after)))
            break;
}

void source::add(listener& who)
{
    {
        std::lock_guard const lock{mutex_};
        ns const now = monotonic_ns();
        if (listeners_.empty()) {
            listened_since_ = now;
            watched_ = ++times_watched_;
        }
        listeners_.push_back(&who);
        who.format(pictures_, sound_);
        if (last_)
            who.keyed_picture(last_.get(), last_alpha_.get());
        begin_sound(now);
        if ((closed_ || away_) && !last_)
            show_black(now);
        if (closed_)
            who.ended();
        else if (away_)
            who.away();
    }
    wake();
}

void source::remove(listener& who)
{
    {
        std::lock_guard const lock{mutex_};
        std::erase(listeners_, &who);
        if (listeners_.empty()) {
            watched_ = nobody;
            last_.reset();
            last_alpha_.reset();
            pending_.reset();
            sound_rests_ = false;
            before_ = before::nothing;
            store_.clear();
            offsets_.reset();
        }
    }
    wake();
}

void source::hurry()
{
    std::lock_guard const lock{mutex_};
    ns const now = monotonic_ns();
    if (last_ && !listeners_.empty() && (closed_ || now - last_shown_ >= resting_after))
        repeat(now);
}

void source::set_network_name(std::string const& name)
{
    std::lock_guard const lock{mutex_};
    network_name_ = name;
}

source::state source::current() const
{
    std::lock_guard const lock{mutex_};
    state result{.network_name = network_name_,
                 .pictures = pictures_,
                 .sound = sound_,
                 .away = away_,
                 .announced = announced_.has_value(),
                 .fourcc = 0,
                 .aspect = 0,
                 .frame_format = 0,
                 .pictures_in = pictures_in_,
                 .blocks_in = blocks_in_,
                 .anchors = time_.anchors(),
                 .sound_breaks = sound_breaks_,
                 .blocks_displaced = blocks_displaced_,
                 .losses = losses_,
                 .offsets = offsets_};
    if (announced_) {
        result.fourcc = announced_->fourcc;
        result.aspect = announced_->aspect;
        result.frame_format = announced_->frame_format;
    }
    return result;
}

} // namespace quillo::publisher
