#include "tools/stand_in_host/player.h"

#include <algorithm>
#include <cmath>

namespace quillo::stand_in {

namespace {

using namespace std::chrono_literals;

constexpr ticks end_of_timeline = 100 * 3600 * ticks_per_second;
constexpr std::int64_t tolerated_late = 1; // frames; older ones are dropped where a newer one is ready
constexpr auto tick_time = 100ms;
constexpr int ticks_between_reset_checks = 10;
constexpr auto preroll_patience = 10s;
constexpr double scrub_range_s = 10; // where the clip has no end

} // namespace

player::player(transmitter& plug_in_, host_state& state_, source& clip_, player_settings const& settings_,
               statistics& figures_)
    : plug_in(plug_in_), state(state_), clip(clip_), settings(settings_), figures(figures_), clock(state.log, news),
      pushes_left(settings.push_limit)
{
    set_range();
}

void player::set_range()
{
    video_description const video = clip.video();
    plan.frame_length = frame_ticks(video.rate);
    std::int64_t const limit = end_of_timeline / plan.frame_length;
    std::int64_t const length = clip.frame_count().value_or(limit);
    auto to_frame = [&](double time_s) {
        auto const number = std::llround(time_s * video.rate.n / video.rate.d);
        return std::clamp<std::int64_t>(number, 0, length);
    };
    plan.in = std::min(to_frame(settings.in_s.value_or(0)), length - 1);
    plan.out = std::max(settings.out_s ? to_frame(*settings.out_s) : length, plan.in + 1);
    if (settings.scrub && plan.out == limit)
        plan.out = plan.in + std::llround(scrub_range_s * video.rate.n / video.rate.d);
    plan.loop = settings.loop && !settings.scrub;
    plan.scrubbing = settings.scrub;
}

void player::post(command c)
{
    {
        std::lock_guard const lock(mutex);
        commands.push_back(c);
    }
    news.ring();
}

outcome player::run()
{
    auto const audio = settings.audio && plug_in.takes_audio() ? clip.audio() : std::nullopt;
    instance = std::make_unique<transmit_instance>(plug_in, clip.video(), audio);
    auto const layout = choose_mode(instance->video_modes(), clip.video(), settings.only);
    if (!layout || !plug_in.takes_video())
        throw module_failure("the module takes none of the formats that the host offers");
    bool const pulls_audio = audio && instance->offered_audio();
    if (pulls_audio) {
        sound = std::make_unique<audio_output>(clip, state.log);
        state.add_player(instance->play_id(), sound.get());
    }
    figures.clips.push_back(
        {clip.title(), clip.video(), *layout, pulls_audio ? audio->rate : 0, pulls_audio ? audio->channels : 0});
    pictures = std::make_unique<renderer>(clip, *layout, state.frames, news);

    struct put_away
    {
        player& p;
        ~put_away()
        {
            PrPlayID const id = p.instance->play_id();
            p.instance.reset();
            p.clock.stop();
            p.state.remove_player(id);
            p.note_figures();
            p.sound.reset();
            p.pictures.reset();
            if (p.state.frames.counts().outstanding() != 0)
                p.state.log.breach("frames not disposed when the instance was");
        }
    } const at_end{*this};

    instance->activate(pulls_audio, true);
    start(settings.speed > 0 ? plan.in : plan.out - 1, settings.speed);
    last_tick = std::chrono::steady_clock::now();
    while (!done) {
        unsigned long const seen = news.count();
        obey_all();
        if (playing && !done) {
            push_what_is_due();
            if (has_ended()) {
                bool const enough = pushes_left && *pushes_left == 0;
                if (settings.scrub && !enough)
                    start(plan.speed > 0 ? plan.out - 1 : plan.in, -plan.speed);
                else
                    done = outcome::ended;
            }
        }
        tick();
        if (!done)
            news.wait(seen, 20ms);
    }
    if (playing)
        halt();
    return *done;
}

// Begins a run at a frame; from a running clock without a stop in between, as hosts do for a change of speed.
void player::start(std::int64_t first, double speed)
{
    plan.first = first;
    plan.speed = speed;
    if (sound)
        sound->prepare(plan);
    pictures->start(plan);
    auto const give_up = std::chrono::steady_clock::now() + preroll_patience;
    while (!pictures->is_ready() && !pictures->end() && std::chrono::steady_clock::now() < give_up) {
        unsigned long const seen = news.count();
        if (!pictures->is_ready() && !pictures->end())
            news.wait(seen, 20ms);
    }

    tmPlaybackClock record{};
    record.inClockCallback = playback_clock::advance;
    record.inCallbackContext = clock.arm();
    record.inStartTime = plan.start_time();
    record.inPlayMode = plan.scrubbing ? host::scrubbing : host::playing;
    record.inSpeed = static_cast<float>(plan.speed);
    record.inInTime = plan.time_of(plan.in);
    record.inOutTime = plan.time_of(plan.out);
    record.inLoop = plan.loop ? kPrTrue : kPrFalse;
    record.inDroppedFrameCallback = [](void*, csSDK_int64) {};
    instance->start_clock(record);
    playing = true;
    next_push = 0;
    ++figures.starts;
}

void player::halt()
{
    instance->stop_clock();
    clock.stop();
    pictures->stop();
    if (sound)
        sound->cease();
    playing = false;
}

void player::push(rendered_frame r)
{
    PPixHand const handle = state.frames.issue(std::move(r.frame));
    auto const began = std::chrono::steady_clock::now();
    instance->push(handle, plan.time_of(r.number), plan.scrubbing ? host::scrubbing : host::playing);
    figures.push_time.add(std::chrono::steady_clock::now() - began);
    ++figures.pushed;
    shown = r.number;
}

void player::push_what_is_due()
{
    while (!pushes_left || *pushes_left > 0) {
        std::int64_t const newest = plan.newest_due(clock.elapsed());
        if (newest < next_push)
            return;
        std::int64_t const tolerated = plan.scrubbing ? 0 : tolerated_late;
        auto r = pictures->take(std::max(newest - tolerated, next_push), newest);
        if (!r)
            return;
        figures.dropped += r->push - next_push;
        figures.late += r->push < newest ? 1 : 0;
        next_push = r->push + 1;
        push(std::move(*r));
        if (pushes_left)
            --*pushes_left;
    }
}

bool player::has_ended()
{
    if (pushes_left && *pushes_left == 0)
        return clock.elapsed() >= plan.due(next_push);
    auto const end = pictures->end();
    if (!end || pictures->is_ready() || clock.elapsed() < plan.due(*end))
        return false;
    figures.dropped += std::max<std::int64_t>(*end - next_push, 0);
    return true;
}

void player::show_still(std::int64_t number)
{
    auto frame = pictures->still(number);
    if (!frame)
        return;
    PPixHand const handle = state.frames.issue(std::move(frame));
    instance->push(handle, -1, host::stopped);
    ++figures.stills;
    shown = number;
}

std::int64_t player::frame_now() const
{
    if (!playing)
        return shown;
    auto const number = plan.frame(plan.newest_due(clock.elapsed()));
    return number.value_or(plan.speed > 0 ? plan.out - 1 : plan.in);
}

void player::seek(std::int64_t number)
{
    number = std::clamp(number, plan.in, plan.out - 1);
    if (playing) {
        halt();
        start(number, plan.speed);
    } else {
        show_still(number);
    }
}

void player::obey(command const& c)
{
    switch (c.what) {
    case command::toggle:
        obey({playing ? command::pause : command::play});
        break;
    case command::pause:
        if (playing)
            halt();
        break;
    case command::play:
        if (!playing)
            start(shown, plan.speed);
        break;
    case command::step:
        if (playing)
            halt();
        seek(shown + std::llround(c.value));
        break;
    case command::seek:
        seek(std::llround(c.value * clip.video().rate.n / clip.video().rate.d));
        break;
    case command::speed:
        if (playing && c.value != 0)
            start(frame_now(), c.value);
        else if (c.value != 0)
            plan.speed = c.value;
        break;
    case command::quit:
        done = outcome::quit;
        break;
    }
}

void player::obey_all()
{
    std::deque<command> waiting;
    {
        std::lock_guard const lock(mutex);
        waiting.swap(commands);
    }
    for (command const& c : waiting)
        if (!done)
            obey(c);
}

void player::tick()
{
    auto const now = std::chrono::steady_clock::now();
    if (now - last_tick < tick_time)
        return;
    last_tick = now;
    if (playing && clock.silence() > settings.clock_patience)
        throw module_failure("the module's clock stands still");
    if (sound && !sound->failure().empty())
        throw input_error(input_error::reason::unreadable, sound->failure());
    if (++ticks_since_reset_check >= ticks_between_reset_checks) {
        ticks_since_reset_check = 0;
        if (plug_in.needs_reset())
            done = outcome::reset;
    }
    if (on_progress)
        on_progress(report());
}

progress player::report() const
{
    return {seconds(plan.time_of(frame_now())), !playing, figures.pushed, figures.late, figures.dropped,
            clock.report().drift_ms()};
}

void player::note_figures()
{
    clock_report const c = clock.report();
    figures.clock.callbacks += c.callbacks;
    figures.clock.elapsed_s += c.elapsed_s;
    figures.clock.steady_s += c.steady_s;
    figures.jitter_p50_ms = std::max(figures.jitter_p50_ms, clock.jitter().quantile_ms(0.5));
    figures.jitter_p99_ms = std::max(figures.jitter_p99_ms, clock.jitter().quantile_ms(0.99));
    figures.jitter_max_ms = std::max(figures.jitter_max_ms, clock.jitter().max_ms());
    if (sound) {
        audio_counts const a = sound->counts();
        figures.audio.blocks += a.blocks;
        figures.audio.underruns += a.underruns;
        figures.audio.refused += a.refused;
    }
}

} // namespace quillo::stand_in
