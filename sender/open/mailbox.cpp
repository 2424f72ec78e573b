#include "sender/open/mailbox.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace quillo::open {

mailbox::mailbox(std::function<void()> on_work) : wake(std::move(on_work)) {}

void mailbox::take_back()
{
    std::unique_lock guard{lock};
    take_back(guard);
}

void mailbox::take_back(std::unique_lock<std::mutex>& guard)
{
    if ((running || begin_copy()) && help(guard))
        wake();
    copy_ended.wait(guard, [&] { return !running; });
    if (!held)
        return;

    if (wants_video && !held_before_watching && to_copy) {
        bool const has_room = pool && held->what.bytes() <= pool->slot_bytes();
        ++(has_room ? counts.video_no_slot : counts.video_replaced);
    }
    held.reset();
}

bool mailbox::begin_copy()
{
    if (!wants_video || !held || !to_copy || !pool || held->what.bytes() > pool->slot_bytes())
        return false;
    auto const slot = pool->take();
    if (!slot)
        return false;
    to_copy = false;
    running.emplace(copied{*held, held_before_watching, *slot}, pool);
    return true;
}

bool mailbox::help(std::unique_lock<std::mutex>& guard)
{
    auto& copy = *running;
    ++copy.workers;
    guard.unlock();
    copy.work.work();
    guard.lock();
    if (--copy.workers > 0)
        return false;

    held_before_watching = false;
    if (pool == copy.into)
        copies[copy.made.slot] = copy.made;
    else if (wants_video)
        ++counts.video_replaced;
    running.reset();
    copy_ended.notify_all();
    return true;
}

void mailbox::hold(picture const& what, std::int64_t timecode_100ns, std::int64_t sent_ns)
{
    std::unique_lock guard{lock};
    take_back(guard);
    held = {what, timecode_100ns, sent_ns, counts.video_sends++};
    to_copy = true;
    held_before_watching = !wants_video;

    bool const new_format = seen.video != what.format;
    seen.video = what.format;
    if (wants_video || new_format)
        wake();
    wake_if_asked();
}

bool mailbox::holds() const
{
    std::lock_guard const guard{lock};
    return held.has_value();
}

void mailbox::add(sound const& what, std::int64_t timecode_100ns, std::int64_t sent_ns)
{
    std::lock_guard const guard{lock};
    auto const first_sample = next_sample;
    next_sample += static_cast<std::uint64_t>(what.samples);
    ++counts.audio_sends;

    bool const new_format = seen.audio != what.format;
    seen.audio = what.format;
    if (wants_audio && !make_room(what.bytes()))
        ++counts.audio_no_room;
    else if (wants_audio) {
        auto& place = ring[(ring_first + ring_count) % ring.size()];
        place.head = {.format = what.format,
                      .samples = what.samples,
                      .silent = what.data ? 0u : 1u,
                      .timecode_100ns = timecode_100ns,
                      .sent_ns = sent_ns,
                      .sample_index = first_sample};
        what.copy_to(place.samples.data());
        ++ring_count;
    }
    if (wants_audio || new_format)
        wake();
    wake_if_asked();
}

bool mailbox::make_room(std::size_t bytes) noexcept
{
    if (ring_count == ring.size())
        return false;
    try {
        ring[(ring_first + ring_count) % ring.size()].samples.resize(bytes);
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

void mailbox::refuse_video(refusal why, SenderVideoFrame const& frame)
{
    std::lock_guard const guard{lock};
    ++counts.video_sends;
    ++counts.video_refused;
    note_refusal(1u << static_cast<unsigned>(why), [&] {
        return std::string{"video frame refused, "} + describe(why) + ": " + std::to_string(frame.width) + " x " +
               std::to_string(frame.height) + ", format " + std::to_string(frame.fourCC) + ", rate " +
               std::to_string(frame.frameRateN) + "/" + std::to_string(frame.frameRateD) + ", line stride " +
               std::to_string(frame.lineStride);
    });
}

void mailbox::refuse_audio(refusal why, SenderAudioFrame const& frame)
{
    std::lock_guard const guard{lock};
    ++counts.audio_sends;
    ++counts.audio_refused;
    note_refusal(1u << (16 + static_cast<unsigned>(why)), [&] {
        return std::string{"audio block refused, "} + describe(why) + ": " + std::to_string(frame.sampleCount) +
               " samples, " + std::to_string(frame.channelCount) + " channels, rate " +
               std::to_string(frame.sampleRate) + ", channel stride " + std::to_string(frame.channelStride);
    });
}

template <class Line>
void mailbox::note_refusal(unsigned reason, Line const& line)
{
    wake_if_asked();
    if (refusals_seen & reason)
        return;
    refusal_lines.push_back(line());
    refusals_seen |= reason;
    wake();
}

void mailbox::count_video_late()
{
    std::lock_guard const guard{lock};
    ++counts.video_late;
}

void mailbox::count_audio_late()
{
    std::lock_guard const guard{lock};
    ++counts.audio_late;
}

void mailbox::set_wants(bool video, bool audio)
{
    std::lock_guard const guard{lock};
    if (video && !wants_video && !running) {
        to_copy = true;
        held_before_watching = held.has_value();
    }
    wants_video = video;
    wants_audio = audio;
    if (!audio)
        ring_count = 0;
}

void mailbox::set_pool(std::shared_ptr<slot_pool> next)
{
    std::lock_guard const guard{lock};
    for (auto& copy : copies) {
        if (copy && wants_video)
            ++counts.video_replaced;
        copy.reset();
    }
    pool.swap(next);
}

void mailbox::give_back(std::uint32_t slot)
{
    std::lock_guard const guard{lock};
    if (pool)
        pool->give_back(slot);
}

std::optional<std::size_t> mailbox::waiting_bytes() const
{
    std::lock_guard const guard{lock};
    if (!wants_video || !held || !to_copy)
        return {};
    return held->what.bytes();
}

void mailbox::copy_waiting()
{
    std::unique_lock guard{lock};
    if (begin_copy())
        help(guard);
}

std::optional<mailbox::copied> mailbox::next_copied()
{
    std::lock_guard const guard{lock};
    auto const oldest = std::min_element(copies.begin(), copies.end(), [](auto const& a, auto const& b) {
        return a && (!b || a->held.index < b->held.index);
    });
    return std::exchange(*oldest, std::nullopt);
}

mailbox::block const* mailbox::first_sound() const
{
    std::lock_guard const guard{lock};
    return ring_count ? &ring[ring_first] : nullptr;
}

void mailbox::drop_sound()
{
    std::lock_guard const guard{lock};
    if (!ring_count)
        return;
    ring_first = (ring_first + 1) % ring.size();
    --ring_count;
}

mailbox::formats mailbox::current_formats() const
{
    std::lock_guard const guard{lock};
    return seen;
}

protocol::losses_body mailbox::totals() const
{
    std::lock_guard const guard{lock};
    return counts;
}

void mailbox::wake_on_send()
{
    std::lock_guard const guard{lock};
    wake_asked = true;
}

void mailbox::wake_if_asked()
{
    if (std::exchange(wake_asked, false))
        wake();
}

std::vector<std::string> mailbox::first_refusals()
{
    std::lock_guard const guard{lock};
    return std::exchange(refusal_lines, {});
}

} // namespace quillo::open
