// Peak and average of each channel of a source, for the meters. Listens while somebody looks.
#pragma once

#include "publisher/listener.h"
#include "publisher/source.h"

#include <memory>
#include <mutex>
#include <vector>

namespace quillo::publisher {

// Decibels below full scale, not below silence_db.
struct level
{
    double peak_db;
    double average_db;
};
constexpr double silence_db = -60;

class level_meter
{
  public:
    void add(float const* planar, int channels, int samples); // null is silence

    // Since the last call; nothing when no sound came: on a busy machine blocks come in bursts.
    std::vector<level> take();

  private:
    struct sums
    {
        float peak = 0;
        double squares = 0;
    };
    std::vector<sums> channels_;
    std::int64_t samples_ = 0;
};

class sound_levels : listener
{
  public:
    explicit sound_levels(std::shared_ptr<source> of) : source_(std::move(of)) { source_->add(*this); }
    sound_levels(sound_levels const&) = delete;
    sound_levels& operator=(sound_levels const&) = delete;
    ~sound_levels() override { source_->remove(*this); }

    std::vector<level> take();

  private:
    void format(picture_format const&, sound_format const&) override {}
    void picture(GstBuffer*) override {}
    void sound(placed_sound const& block) override;
    void ended() override {}

    std::shared_ptr<source> const source_;
    std::mutex mutex_;
    level_meter meter_;
};

} // namespace quillo::publisher
