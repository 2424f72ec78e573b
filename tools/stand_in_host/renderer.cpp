#include "tools/stand_in_host/renderer.h"

#include <algorithm>
#include <chrono>

namespace quillo::stand_in {

namespace {

constexpr std::size_t bytes_ahead = 96u << 20;

std::size_t depth_for(video_description const& video)
{
    std::size_t const bytes =
        static_cast<std::size_t>(video.width) * static_cast<std::size_t>(video.height) * bytes_per_pixel;
    return std::clamp<std::size_t>(bytes_ahead / std::max<std::size_t>(bytes, 1), 3, 8);
}

} // namespace

renderer::renderer(source& from_, pixel_layout layout_, frame_ledger& frames_, bell& news_)
    : from(from_), layout(layout_), frames(frames_), news(news_), depth(depth_for(from.video())),
      thread(&renderer::work, this)
{
}

renderer::~renderer()
{
    stop();
    {
        std::lock_guard const lock(mutex);
        quit = true;
    }
    changed.notify_all();
    thread.join();
}

void renderer::drop_all()
{
    for (rendered_frame& r : ready)
        frames.give_back(std::move(r.frame));
    ready.clear();
}

void renderer::start(playback_plan const& new_plan)
{
    {
        std::lock_guard const lock(mutex);
        drop_all();
        plan = new_plan;
        next = 0;
        wanted = 0;
        ended.reset();
        ++generation;
        running = true;
    }
    changed.notify_all();
}

void renderer::stop()
{
    std::unique_lock lock(mutex);
    running = false;
    ++generation;
    changed.wait(lock, [&] { return !drawing; });
    drop_all();
}

std::unique_ptr<host_frame> renderer::draw(std::int64_t number)
{
    auto const began = std::chrono::steady_clock::now();
    auto frame = frames.take(from.video(), layout);
    if (!from.draw(number, frame->view())) {
        frames.give_back(std::move(frame));
        return nullptr;
    }
    frame->render_ms = static_cast<csSDK_int32>(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began).count());
    return frame;
}

std::unique_ptr<host_frame> renderer::still(std::int64_t number) { return draw(number); }

bool renderer::has_room() const { return ready.size() < depth; }

// Pushes that were left out may have passed the end before it was noticed.
void renderer::end_at(std::int64_t push)
{
    auto const count = from.frame_count();
    auto exists = [&](std::int64_t p) {
        auto const number = plan.frame(p);
        return number && (!count || *number < *count);
    };
    while (push > 0 && !exists(push - 1))
        --push;
    ended = push;
    news.ring();
}

void renderer::work()
{
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [&] { return quit || (running && !ended && !failure && has_room()); });
        if (quit)
            return;
        next = std::max(next, wanted);
        std::int64_t const push = next;
        auto const number = plan.frame(push);
        if (!number) {
            end_at(push);
            continue;
        }
        unsigned long const of = generation;
        bool const loops = plan.loop;
        drawing = true;
        lock.unlock();
        std::unique_ptr<host_frame> frame;
        std::exception_ptr thrown;
        try {
            frame = draw(*number);
            // A loop's last frames may be missing where the clip's length was a guess.
            auto const count = from.frame_count();
            if (!frame && loops && count && *count > 0 && *number >= *count)
                frame = draw(*count - 1);
        } catch (...) {
            thrown = std::current_exception();
        }
        lock.lock();
        drawing = false;
        if (of != generation) {
            if (frame)
                frames.give_back(std::move(frame));
        } else if (thrown) {
            failure = thrown;
        } else if (frame) {
            ready.push_back({push, *number, std::move(frame)});
            next = push + 1;
        } else {
            end_at(push);
        }
        changed.notify_all();
        news.ring();
    }
}

std::optional<rendered_frame> renderer::take(std::int64_t oldest_wanted, std::int64_t newest)
{
    std::lock_guard const lock(mutex);
    wanted = oldest_wanted;
    if (failure)
        std::rethrow_exception(failure);
    while (ready.size() > 1 && ready[0].push < oldest_wanted && ready[1].push <= newest) {
        frames.give_back(std::move(ready.front().frame));
        ready.pop_front();
    }
    if (ready.empty() || ready.front().push > newest)
        return std::nullopt;
    rendered_frame result = std::move(ready.front());
    ready.pop_front();
    changed.notify_all();
    return result;
}

bool renderer::is_ready() const
{
    std::lock_guard const lock(mutex);
    return failure || !ready.empty();
}

std::optional<std::int64_t> renderer::end() const
{
    std::lock_guard const lock(mutex);
    return ended;
}

} // namespace quillo::stand_in
