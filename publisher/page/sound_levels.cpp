#include "publisher/page/sound_levels.h"

#include <algorithm>
#include <cmath>

namespace quillo::publisher {

namespace {

double decibels(double amplitude)
{
    // A sample that is not a number counts as nothing.
    return amplitude > 0 ? std::clamp(20 * std::log10(amplitude), silence_db, 40.0) : silence_db;
}

} // namespace

void level_meter::add(float const* planar, int channels, int samples)
{
    if (channels_.size() != static_cast<std::size_t>(channels)) {
        channels_.assign(static_cast<std::size_t>(channels), {});
        samples_ = 0;
    }
    samples_ += samples;
    if (!planar)
        return;
    for (auto& channel : channels_) {
        for (int s = 0; s < samples; ++s) {
            float const size = std::abs(planar[s]);
            channel.peak = size > channel.peak ? size : channel.peak;
            channel.squares += static_cast<double>(size) * size;
        }
        planar += samples;
    }
}

std::vector<level> level_meter::take()
{
    std::vector<level> result;
    if (samples_ == 0)
        return result;
    for (auto& channel : channels_) {
        double const mean = channel.squares / static_cast<double>(samples_);
        result.push_back({decibels(channel.peak), decibels(std::sqrt(mean))});
        channel = {};
    }
    samples_ = 0;
    return result;
}

void sound_levels::sound(placed_sound const& block)
{
    std::lock_guard const lock{mutex_};
    meter_.add(block.planar, block.format.channels, block.samples);
}

std::vector<level> sound_levels::take()
{
    std::lock_guard const lock{mutex_};
    return meter_.take();
}

} // namespace quillo::publisher
