#include "bench/road/module_host.h"

#include "tools/stand_in_host/host_application.h"

namespace quillo::bench {

namespace {

// Both pixels of a pair get its chroma, so that the way back gives the same bytes.
void expand(std::uint8_t const* uyvy, std::uint8_t* vuya, int pixels)
{
    for (int x = 0; x < pixels; x += 2, uyvy += 4, vuya += 8)
        for (int of_pair = 0; of_pair < 2; ++of_pair) {
            vuya[of_pair * 4] = uyvy[2];
            vuya[of_pair * 4 + 1] = uyvy[0];
            vuya[of_pair * 4 + 2] = uyvy[1 + of_pair * 2];
            vuya[of_pair * 4 + 3] = 255;
        }
}

stand_in::video_description description(int width, int height, int rate)
{
    stand_in::video_description video;
    video.width = width;
    video.height = height;
    video.rate = {rate, 1};
    return video;
}

} // namespace

module_host::module_host(std::filesystem::path const& file, int width, int height, int rate)
    : video_(description(width, height, rate)), state_(stand_in::host_applications().front().code, 0), module_(file),
      plug_ins_(stand_in::start_transmitters(module_, state_)), instance_(*plug_ins_.at(0), video_, std::nullopt),
      uyvy_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 2)
{
    instance_.activate(false, true);
}

void module_host::prepare(test_picture const& picture, std::uint32_t counter)
{
    // A frame keeps the picture that was drawn into it.
    std::uint64_t const wanted = counter % test_picture::variants + 1;
    std::vector<std::unique_ptr<stand_in::host_frame>> others;
    while (!next_) {
        auto frame = state_.frames.take(video_, stand_in::pixel_layout::vuya);
        auto const view = frame->view();
        bool const fresh = *view.note == 0;
        if (fresh) {
            picture.draw({counter, 0}, uyvy_.data());
            for (int y = 0; y < video_.height; ++y)
                expand(uyvy_.data() + std::ptrdiff_t{y} * video_.width * 2, view.row(y), video_.width);
            *view.note = wanted;
        }
        if (*view.note == wanted)
            next_ = std::move(frame);
        else
            others.push_back(std::move(frame));
    }
    for (auto& frame : others)
        state_.frames.give_back(std::move(frame));
}

void module_host::sign(test_picture const& picture, stamp const& s)
{
    picture.sign(s, uyvy_.data());
    auto const view = next_->view();
    for (int y = 0; y < stamp_rows; ++y)
        expand(uyvy_.data() + std::ptrdiff_t{y} * video_.width * 2, view.row(y), stamp_width);
}

void module_host::push(std::int64_t frame)
{
    instance_.push(state_.frames.issue(std::move(next_)), frame * stand_in::frame_ticks(video_.rate), host::playing);
}

} // namespace quillo::bench
