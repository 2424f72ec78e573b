#include "tools/stand_in_host/media/video_stream.h"
#include "tools/stand_in_host/media/describe.h"
#include "tools/stand_in_host/media/draw_frame.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quillo::stand_in {

namespace {

constexpr std::size_t kept_pictures = 16;
constexpr std::int64_t backward_run = 12;  // frames decoded in one go before a frame that was passed already
constexpr std::int64_t read_on_limit = 48; // frames ahead; further ones are searched

constexpr std::int64_t second_ns = 1000000000;

} // namespace

video_stream::video_stream(stream_reader& reader_) : reader(reader_), video(describe_video(reader.peek()))
{
    how = reader.shown();
    if (how.swaps_sides()) {
        std::swap(video.width, video.height);
        std::swap(video.pixel_aspect_n, video.pixel_aspect_d);
    }
    GstBuffer* const buffer = gst_sample_get_buffer(reader.peek());
    auto const length = reader.duration();
    still = !length && !GST_BUFFER_DURATION_IS_VALID(buffer);
    searchable = !still && reader.is_searchable();
    if (!reader.counts_from_start())
        begin = stream_time(reader.peek());
    if (length)
        count = std::max<std::int64_t>(frames_in(*length), 1);
    else if (searchable)
        count_frames();
}

std::optional<std::int64_t> video_stream::frame_count() const
{
    std::int64_t const known = count;
    return known == endless ? std::nullopt : std::optional(known);
}

std::int64_t video_stream::frames_in(std::chrono::nanoseconds time) const
{
    return scaled(time.count(), video.rate.n, second_ns * video.rate.d);
}

std::int64_t video_stream::frame_of(GstSample* sample) const { return frames_in(stream_time(sample) - begin); }

// Some containers tell no length when they are short.
void video_stream::count_frames()
{
    while (GstSample* const sample = reader.peek()) {
        count = frame_of(sample) + 1;
        reader.next();
    }
    search(0);
}

void video_stream::search(std::int64_t frame)
{
    // A quarter of a frame later: times in files are rounded, and the frame that begins just before is wanted.
    std::int64_t const position = scaled(4 * frame + 1, second_ns * video.rate.d, std::int64_t{4} * video.rate.n);
    if (reader.seek(std::chrono::nanoseconds(frame == 0 ? 0 : position)))
        recent.clear();
    else
        searchable = false;
}

void video_stream::read_up_to(std::int64_t frame)
{
    while (GstSample* const sample = reader.peek()) {
        std::int64_t const number = frame_of(sample);
        if (number > frame && !recent.empty())
            return;
        recent.push_back({number, reader.next()});
        if (recent.size() > kept_pictures)
            recent.pop_front();
    }
    if (!recent.empty() && !still)
        count = recent.back().frame + 1;
}

GstSample* video_stream::find(std::int64_t frame)
{
    if (searchable && !recent.empty()) {
        if (frame < recent.front().frame)
            search(std::max<std::int64_t>(frame - backward_run, 0));
        else if (frame > recent.back().frame + read_on_limit)
            search(frame);
    } else if (searchable && frame > read_on_limit) {
        search(frame);
    }
    if (recent.empty() || recent.back().frame < frame)
        read_up_to(frame);
    auto const after = std::find_if(recent.begin(), recent.end(), [frame](auto const& p) { return p.frame > frame; });
    if (after != recent.begin())
        return std::prev(after)->sample.get();
    return recent.empty() ? nullptr : recent.front().sample.get();
}

// Pictures of another size than the first one's are not shown.
bool video_stream::draw_stored(GstSample* sample, picture_view const& target) const
{
    GstVideoInfo info;
    GstVideoFrame mapped;
    gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
    if (info.width != target.width || info.height != target.height ||
        !gst_video_frame_map(&mapped, &info, gst_sample_get_buffer(sample), GST_MAP_READ))
        return false;
    draw_frame(mapped, video.fields != field_order::progressive, target);
    gst_video_frame_unmap(&mapped);
    return true;
}

bool video_stream::draw(std::int64_t frame, picture_view const& target)
{
    GstSample* const sample = find(frame);
    auto const end = frame_count();
    if (sample == nullptr || (end && frame >= *end))
        return false;
    if (target.note != nullptr)
        *target.note = 0;
    if (how.is_upright())
        return draw_stored(sample, target);
    int const width = how.swaps_sides() ? target.height : target.width;
    int const height = how.swaps_sides() ? target.width : target.height;
    std::vector<unsigned char> stored(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                      bytes_per_pixel);
    picture_view const view{target.layout, width, height, stored.data(), width * bytes_per_pixel};
    if (!draw_stored(sample, view))
        return false;
    copy_upright(view, how, target);
    return true;
}

} // namespace quillo::stand_in
