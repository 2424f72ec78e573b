#include "tools/stand_in_host/frame_ledger.h"

#include <atomic>
#include <cstring>
#include <new>

namespace quillo::stand_in {

namespace {

constexpr std::size_t frame_alignment = 16;
constexpr std::size_t kept_idle = 16;
constexpr std::size_t kept_returned = 1024;

int aligned_row(int width)
{
    constexpr int last = static_cast<int>(frame_alignment) - 1;
    return (width * bytes_per_pixel + last) & ~last;
}

} // namespace

PrPixelFormat format_code(pixel_layout layout)
{
    return layout == pixel_layout::vuya ? PrPixelFormat_VUYA_4444_8u_709 : PrPixelFormat_BGRA_4444_8u;
}

host_frame::host_frame(video_description const& video, pixel_layout layout_, int row_padding)
    : aspect_n(static_cast<csSDK_uint32>(video.pixel_aspect_n)),
      aspect_d(static_cast<csSDK_uint32>(video.pixel_aspect_d)), layout(layout_)
{
    record.bounds = {0, 0, static_cast<csSDK_int16>(video.height), static_cast<csSDK_int16>(video.width)};
    record.rowbytes = aligned_row(video.width) + row_padding;
    record.bitsperpixel = 8 * bytes_per_pixel;
    std::size_t const size = static_cast<std::size_t>(record.rowbytes) * static_cast<std::size_t>(video.height);
    memory.reset(static_cast<unsigned char*>(std::aligned_alloc(frame_alignment, size)));
    if (!memory)
        throw std::bad_alloc();
    std::memset(memory.get(), 0, size);
    record.pix = memory.get();
}

picture_view host_frame::view()
{
    int const height = record.bounds.bottom;
    std::ptrdiff_t const stride = record.rowbytes;
    return {layout, record.bounds.right, height, memory.get() + (height - 1) * stride, -stride, &note};
}

PrPixelFormat host_frame::format() const { return format_code(layout); }

bool host_frame::fits(video_description const& video, pixel_layout wanted) const
{
    return record.bounds.right == video.width && record.bounds.bottom == video.height && layout == wanted &&
           aspect_n == static_cast<csSDK_uint32>(video.pixel_aspect_n) &&
           aspect_d == static_cast<csSDK_uint32>(video.pixel_aspect_d);
}

std::unique_ptr<host_frame> frame_ledger::take(video_description const& video, pixel_layout layout)
{
    static std::atomic<csSDK_uint64> pictures{0};
    std::unique_ptr<host_frame> frame;
    {
        std::lock_guard const lock(mutex);
        while (!idle.empty() && !frame) {
            if (idle.back()->fits(video, layout))
                frame = std::move(idle.back());
            idle.pop_back();
        }
    }
    if (!frame)
        frame = std::make_unique<host_frame>(video, layout, row_padding);
    frame->key = ++pictures;
    return frame;
}

void frame_ledger::keep(std::unique_ptr<host_frame> frame)
{
    if (idle.size() < kept_idle)
        idle.push_back(std::move(frame));
}

void frame_ledger::give_back(std::unique_ptr<host_frame> frame)
{
    std::lock_guard const lock(mutex);
    keep(std::move(frame));
}

PPixHand frame_ledger::issue(std::unique_ptr<host_frame> frame)
{
    std::lock_guard const lock(mutex);
    PPixHand handle = nullptr;
    if (returned.size() > kept_returned) {
        handle = returned.front();
        returned.pop_front();
    } else {
        auto fresh = std::make_unique<ticket>();
        handle = &fresh->pix;
        tickets.emplace(handle, std::move(fresh));
    }
    ticket& t = *tickets.at(handle);
    t.pix = frame->pix();
    t.frame = std::move(frame);
    ++totals.issued;
    return handle;
}

frame_ledger::ticket* frame_ledger::find_locked(PPixHand handle, char const* asked_by)
{
    auto const found = tickets.find(handle);
    if (found == tickets.end()) {
        log.breach(std::string(asked_by) + " with a handle that is no frame's");
        return nullptr;
    }
    if (!found->second->frame) {
        log.breach(std::string(asked_by) + " with a frame that was disposed before");
        return nullptr;
    }
    return found->second.get();
}

host_frame* frame_ledger::find(PPixHand handle, char const* asked_by)
{
    std::lock_guard const lock(mutex);
    ticket* const t = find_locked(handle, asked_by);
    return t != nullptr ? t->frame.get() : nullptr;
}

bool frame_ledger::dispose(PPixHand handle)
{
    std::lock_guard const lock(mutex);
    ticket* const t = find_locked(handle, "Dispose");
    if (t == nullptr)
        return false;
    t->pix = nullptr;
    keep(std::move(t->frame));
    returned.push_back(handle);
    ++totals.disposed;
    return true;
}

frame_counts frame_ledger::counts() const
{
    std::lock_guard const lock(mutex);
    return totals;
}

} // namespace quillo::stand_in
