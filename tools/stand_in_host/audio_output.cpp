#include "tools/stand_in_host/audio_output.h"
#include "tools/stand_in_host/media/input_error.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace quillo::stand_in {

namespace {

using namespace std::chrono_literals;

constexpr int piece_samples = 1024;
constexpr auto pull_patience = 500ms;

// Backwards every piece is a search in the file.
int piece_size(double speed, int rate) { return speed < 0 ? rate / 4 : piece_samples; }

} // namespace

audio_output::audio_output(source& from_, journal& log_)
    : from(from_), log(log_), format(*from.audio()),
      output_channels(static_cast<std::size_t>(std::max(format.channels, 2))), reader(&audio_output::read_ahead, this)
{
}

audio_output::~audio_output()
{
    {
        std::lock_guard const lock(mutex);
        quit = true;
    }
    changed.notify_all();
    reader.join();
}

// A module that is slow to start its sound may be this many starts of the clock behind.
constexpr std::size_t most_given = 16;

void audio_output::prepare(playback_plan const& next)
{
    {
        std::lock_guard const lock(mutex);
        if (!active)
            given.clear();
        plan = next;
        given.push_back(next);
        if (given.size() > most_given)
            given.pop_front();
        ++generation;
        active = true;
        pieces.clear();
        buffered = 0;
        debt = 0;
    }
    changed.notify_all();
}

void audio_output::cease()
{
    std::lock_guard const lock(mutex);
    active = false;
    ++generation;
    if (now != state::idle)
        log.breach("audio not stopped when StopPlaybackClock returned");
    now = state::idle;
}

void audio_output::read_ahead()
{
    std::unique_lock lock(mutex);
    unsigned long of = 0;
    std::int64_t position = 0; // samples since the start of the run
    while (true) {
        changed.wait(lock, [&] {
            return quit || (active && failed.empty() && buffered < static_cast<std::size_t>(format.rate / 2));
        });
        if (quit)
            return;
        if (of != generation) {
            of = generation;
            position = 0;
        }
        playback_plan const run = plan;
        lock.unlock();
        piece next{};
        std::string why;
        try {
            next = next_piece(run, position);
        } catch (input_error const& error) {
            why = error.what();
        }
        lock.lock();
        failed = why;
        if (of == generation && failed.empty()) {
            buffered += next.samples[0].size();
            pieces.push_back(std::move(next));
        }
        changed.notify_all();
    }
}

audio_output::piece audio_output::next_piece(playback_plan const& run, std::int64_t& position)
{
    ticks const elapsed = scaled(position, ticks_per_second, format.rate);
    int count = piece_size(run.speed, format.rate);
    auto const place = run.position(elapsed);
    if (!place) {
        position += count;
        piece silence{run.time_of(run.out), 0, 0, {}};
        silence.samples.assign(static_cast<std::size_t>(format.channels), std::vector<float>(piece_samples));
        return silence;
    }
    std::int64_t const end = scaled(run.next_break(elapsed), format.rate, ticks_per_second);
    count = static_cast<int>(std::clamp<std::int64_t>(end - position, 1, count));
    position += count;
    return read_piece(*place, run.speed, count);
}

audio_output::piece audio_output::read_piece(ticks place, double speed, int count)
{
    auto const channels = static_cast<std::size_t>(format.channels);
    double const ticks_per_sample = static_cast<double>(ticks_per_second) / format.rate;
    auto read = [&](std::int64_t first, std::size_t samples) {
        std::vector<std::vector<float>> result(channels, std::vector<float>(samples));
        std::vector<float*> pointers;
        for (auto& channel : result)
            pointers.push_back(channel.data());
        from.read_audio(first, static_cast<int>(samples), pointers.data());
        return result;
    };

    if (speed == 1) {
        std::int64_t const first = scaled(place, format.rate, ticks_per_second);
        return {scaled(first, ticks_per_second, format.rate), ticks_per_sample, 0,
                read(first, static_cast<std::size_t>(count))};
    }

    double const start = static_cast<double>(place) / ticks_per_sample;
    double const last = start + (count - 1) * speed;
    auto const low = static_cast<std::int64_t>(std::floor(std::min(start, last)));
    auto const high = static_cast<std::int64_t>(std::floor(std::max(start, last))) + 1;
    auto const around = read(low, static_cast<std::size_t>(high - low + 1));
    piece result{place, ticks_per_sample * speed, 0, {}};
    result.samples.assign(channels, std::vector<float>(static_cast<std::size_t>(count)));
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
        double const at = start + static_cast<double>(k) * speed - static_cast<double>(low);
        auto const whole = static_cast<std::size_t>(at);
        auto const part = static_cast<float>(at - static_cast<double>(whole));
        for (std::size_t c = 0; c < channels; ++c)
            result.samples[c][k] = around[c][whole] * (1 - part) + around[c][whole + 1] * part;
    }
    return result;
}

// The reserved error codes have the top bit set; suites return them as signed numbers.
prSuiteError audio_output::refuse(unsigned error, char const* what)
{
    ++totals.refused;
    log.breach(what);
    return static_cast<prSuiteError>(error);
}

prSuiteError audio_output::set_up(bool scrubbing, host::audio_settings const& settings)
{
    std::lock_guard const lock(mutex);
    if (now != state::idle)
        return refuse(suiteError_PlayModuleAudioIllegalAction, "audio set up twice");
    if (!active)
        return refuse(suiteError_PlayModuleAudioIllegalAction, "audio set up outside playback");
    if (settings.mSampleRate != static_cast<float>(format.rate) || settings.mBlockSize <= 0)
        return refuse(suiteError_PlayModuleAudioIllegalPlaySetting,
                      "audio set up with a rate that is not the instance's");
    if (std::none_of(given.begin(), given.end(), [&](auto const& g) { return g.scrubbing == scrubbing; }))
        log.breach("audio set up for another play mode than the clock's");
    now = state::ready;
    return suiteError_NoError;
}

prSuiteError audio_output::start(host::audio_range const& range, float speed)
{
    std::lock_guard const lock(mutex);
    if (now == state::idle)
        return refuse(suiteError_PlayModuleAudioNotInitialized, "audio started before it was set up");
    auto const is_meant = [&](playback_plan const& g) {
        return range.mInTime == g.time_of(g.in) && range.mOutTime == g.time_of(g.out) &&
               range.mStartTime == g.start_time() && (range.mLoop != 0) == g.loop &&
               speed == static_cast<float>(g.speed);
    };
    if (std::none_of(given.begin(), given.end(), is_meant))
        log.breach("audio started with a range or speed that is not the clock's");
    now = state::started;
    return suiteError_NoError;
}

prSuiteError audio_output::stop()
{
    std::lock_guard const lock(mutex);
    if (now == state::idle)
        return refuse(suiteError_PlayModuleAudioNotInitialized, "audio stopped before it was set up");
    now = state::idle;
    return suiteError_NoError;
}

// Moves up to count samples to the buffers, or away where there are none.
std::size_t audio_output::consume(std::size_t count, float* const* buffers)
{
    std::size_t done = 0;
    while (done < count && !pieces.empty()) {
        piece& p = pieces.front();
        std::size_t const part = std::min(count - done, p.samples[0].size() - p.used);
        for (std::size_t c = 0; buffers != nullptr && c < output_channels; ++c) {
            auto const& channel = p.samples[std::min(c, p.samples.size() - 1)];
            std::copy_n(channel.begin() + static_cast<std::ptrdiff_t>(p.used), part, buffers[c] + done);
        }
        done += part;
        p.used += part;
        if (p.used == p.samples[0].size())
            pieces.pop_front();
    }
    buffered -= done;
    changed.notify_all();
    return done;
}

prSuiteError audio_output::pull(float* const* buffers, unsigned count, PrTime* time)
{
    std::unique_lock lock(mutex);
    if (now == state::idle)
        return refuse(suiteError_PlayModuleAudioNotInitialized, "audio pulled before it was set up");
    if (now == state::ready)
        return refuse(suiteError_PlayModuleAudioNotStarted, "audio pulled before it was started");
    if (buffers == nullptr || count == 0)
        return refuse(suiteError_InvalidParms, "audio pulled without buffers");

    debt -= consume(std::min(debt, buffered), nullptr);
    changed.wait_for(lock, pull_patience, [&] { return buffered >= count || !failed.empty(); });
    if (debt > 0 || buffered < count) {
        ++totals.underruns;
        debt += count - consume(buffered, nullptr);
        return static_cast<prSuiteError>(suiteError_Fail);
    }
    piece const& p = pieces.front();
    if (time != nullptr)
        *time = p.time + std::llround(static_cast<double>(p.used) * p.ticks_per_sample);
    consume(count, buffers);
    ++totals.blocks;
    return suiteError_NoError;
}

audio_counts audio_output::counts() const
{
    std::lock_guard const lock(mutex);
    return totals;
}

std::string audio_output::failure() const
{
    std::lock_guard const lock(mutex);
    return failed;
}

} // namespace quillo::stand_in
