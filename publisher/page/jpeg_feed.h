// The pictures of a source as JPEG, encoded once for all who look. Runs while there is one.
#pragma once

#include "publisher/listener.h"
#include "publisher/page/loop_thread.h"
#include "publisher/pipeline.h"
#include "publisher/source.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace quillo::publisher {

using bytes_ptr = std::unique_ptr<GBytes, releases<g_bytes_unref>>;

// Called on the loop.
class jpeg_viewer
{
  public:
    virtual ~jpeg_viewer() = default;
    virtual void jpeg(GBytes* picture) = 0;
    virtual void ended() = 0; // the source has gone
};

// Used on the loop only, but for what a listener is called with.
class jpeg_feed : public std::enable_shared_from_this<jpeg_feed>, listener
{
  public:
    static constexpr int most_pictures_a_second = 30;
    static constexpr int widest = 1280;
    static constexpr int highest = 720;

    jpeg_feed(loop_thread& loop, std::shared_ptr<source> of) : loop_(loop), source_(std::move(of)) {}
    ~jpeg_feed() override;

    void add(jpeg_viewer& who);
    void remove(jpeg_viewer& who);
    source const& of() const { return *source_; }

  private:
    void format(picture_format const& pictures, sound_format const& sound) override;
    void picture(GstBuffer* fill) override;
    void sound(placed_sound const&) override {}
    void away() override {}
    void ended() override;

    void encoded(GstSample* jpeg);
    void distribute();

    loop_thread& loop_;
    std::shared_ptr<source> const source_;
    std::vector<jpeg_viewer*> viewers_;

    std::optional<picture_format> pictures_; // these with the source's lock held
    std::unique_ptr<pipeline> encoder_;
    int every_ = 1; // which picture is shown
    int skipped_ = 0;

    std::mutex latest_mutex_; // a loop that is late gets the last picture only
    bytes_ptr latest_;
};

// Elements from appsrc "in" to appsink "out" that make JPEG pictures of a size for a page.
std::string jpeg_pipeline(picture_format const& format);

} // namespace quillo::publisher
