// The pictures and the sound of a source encoded once for all viewers of its default mount. Lives while there is one.
#pragma once

#include "publisher/encoder.h"
#include "publisher/listener.h"
#include "publisher/pipeline.h"
#include "publisher/stale.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace quillo::publisher {

// A viewer takes access units and Opus packets; calls come from the encoders' threads and must return quickly.
class encoded_viewer
{
  public:
    virtual ~encoded_viewer() = default;
    virtual void access_unit(GstSample* unit, bool key) = 0;
    virtual void opus_packet(GstSample* packet) = 0;
    // The machine stood still, some items were too late to be sent, and now it goes on.
    virtual void held_up() = 0;
    virtual void ended() = 0;
};

// What an encoder was too late for, or the machine as a whole.
struct encoder_losses
{
    std::uint64_t pictures = 0;
    std::uint64_t packets = 0; // of sound

    encoder_losses operator+(encoder_losses const& other) const
    {
        return {pictures + other.pictures, packets + other.packets};
    }
};

class encoded_feed : public listener
{
  public:
    explicit encoded_feed(encoder_choice choice) : choice_(std::move(choice)) {}

    void add(encoded_viewer& viewer);    // told at once of an end that came before it
    void remove(encoded_viewer& viewer); // not called any more once this has returned
    bool has_viewers() const;

    static constexpr std::chrono::seconds key_frame_interval{1};

    // The next picture becomes a key frame.
    void request_key_frame();

    encoder_losses lost() const { return {lost_pictures_, lost_packets_}; }

    void format(picture_format const& pictures, sound_format const& sound) override;
    void picture(GstBuffer* fill) override;
    void sound(placed_sound const& block) override;
    void away() override {}
    void ended() override;

  private:
    void distribute_unit(GstSample* unit, picture_format const& pictures);
    void distribute_packet(GstSample* packet);
    void go_on(); // with the viewers' lock

    void force_key_frame();

    encoder_choice const choice_;
    std::atomic<std::uint64_t> lost_pictures_{0};
    std::atomic<std::uint64_t> lost_packets_{0};

    mutable std::mutex viewers_mutex_;
    std::vector<encoded_viewer*> viewers_;
    bool ended_ = false;

    mutable std::mutex pipelines_mutex_; // never taken by the pipelines' threads
    std::optional<picture_format> pictures_;
    std::optional<sound_format> sound_;
    std::chrono::steady_clock::time_point last_forced_;
    std::atomic<bool> key_frame_wanted_{false};
    std::unique_ptr<pipeline> video_;
    std::unique_ptr<pipeline> audio_;

    // Of the encoders' threads.
    stale_items stale_units_;
    stale_items stale_packets_;
    bool without_reference_ = false;
    bool units_left_out_ = false;
    int packets_left_out_ = 0; // in a row
};

} // namespace quillo::publisher
