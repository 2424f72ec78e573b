#include "publisher/picture_store.h"

#include "publisher/caps.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace quillo::publisher {

namespace {

constexpr unsigned char black_uyvy[4] = {128, 16, 128, 16};
constexpr int slate_share = 4; // of the light, one part stays

using copier = void (*)(sent_picture const&, picture_format const&, unsigned char*, std::size_t);

void slate_of_uyvy(unsigned char const* from, unsigned char* to, int width)
{
    for (int k = 0; k < 2 * width; k += 2) {
        to[k] = 128;
        to[k + 1] = static_cast<unsigned char>(16 + std::max(0, from[k + 1] - 16) / slate_share);
    }
}

void slate_of_bgr(unsigned char const* from, unsigned char* to, int width)
{
    for (int k = 0; k < 3 * width; k += 3) {
        int const luma = (19 * from[k] + 183 * from[k + 1] + 54 * from[k + 2]) / 256; // BT.709
        std::memset(to + k, luma / slate_share, 3);
    }
}

bool copy_into(GstBuffer* buffer, GstVideoInfo const& info, sent_picture const& sent, picture_format const& shape,
               copier copy)
{
    mapped_frame frame{info, buffer, GST_MAP_WRITE};
    if (!frame)
        return false;
    plane const to = plane_of(frame);
    copy(sent, shape, to.data, static_cast<std::size_t>(to.stride));
    return true;
}

// A single frame of another shape does not change what was announced.
bool convert_into(GstBuffer* buffer, GstVideoInfo const& info, sent_picture const& sent, picture_format const& shape,
                  GstVideoInfo odd_info, copier copy)
{
    // Of rates the converter knows nothing.
    GST_VIDEO_INFO_FPS_N(&odd_info) = GST_VIDEO_INFO_FPS_N(&info);
    GST_VIDEO_INFO_FPS_D(&odd_info) = GST_VIDEO_INFO_FPS_D(&info);
    auto const odd = adopt<buffer_ptr>(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&odd_info), nullptr));
    video_converter_ptr const converter{gst_video_converter_new(&odd_info, const_cast<GstVideoInfo*>(&info), nullptr)};
    if (!odd || !converter || !copy_into(odd.get(), odd_info, sent, shape, copy))
        return false;
    mapped_frame from{odd_info, odd.get(), GST_MAP_READ};
    mapped_frame to{info, buffer, GST_MAP_WRITE};
    if (!from || !to)
        return false;
    gst_video_converter_frame(converter.get(), from.get(), to.get());
    return true;
}

} // namespace

void picture_store::set_format(picture_format const& format)
{
    if (has_format_ && format == format_)
        return;
    format_ = format;
    fills_.set_info(picture_info(format));
    alphas_.set_info(alpha_info(format));
    has_format_ = true;
}

void picture_store::clear()
{
    fills_.clear();
    alphas_.clear();
}

// Not copied: the slot itself, for as long as anybody has the picture.
buffer_ptr picture_store::in_place(sent_picture const& sent) const
{
    auto const bytes = static_cast<std::size_t>(sent.format.width) * static_cast<std::size_t>(sent.format.height) * 2;
    // An odd width or a padded row makes another size of it.
    if (!sent.loan || format_.layout != fill::uyvy || sent.format.width != format_.width ||
        GST_VIDEO_INFO_SIZE(&fills_.info()) != bytes)
        return nullptr;
    return adopt<buffer_ptr>(gst_buffer_new_wrapped_full(
        GST_MEMORY_FLAG_READONLY, const_cast<unsigned char*>(sent.data), bytes, 0, bytes, new auto(sent.loan),
        [](gpointer loan) { delete static_cast<std::shared_ptr<void const>*>(loan); }));
}

buffer_ptr picture_store::take(sent_picture const& sent, picture_format const& shape)
{
    bool const as_announced =
        shape.width == format_.width && shape.height == format_.height && shape.layout == format_.layout;
    if (as_announced)
        if (auto as_sent = in_place(sent)) {
            if (++in_place_ == calm)
                fills_.clear();
            return as_sent;
        }
    in_place_ = 0;
    auto buffer = fills_.blank();
    if (!buffer)
        return nullptr;
    bool const good = as_announced
                          ? copy_into(buffer.get(), fills_.info(), sent, shape, copy_fill)
                          : convert_into(buffer.get(), fills_.info(), sent, shape, picture_info(shape), copy_fill);
    return good ? std::move(buffer) : nullptr;
}

buffer_ptr picture_store::take_alpha(sent_picture const& sent, picture_format const& shape)
{
    if (!has_alpha(sent.format))
        return nullptr;
    auto buffer = alphas_.blank();
    if (!buffer)
        return nullptr;
    bool const as_announced = shape.width == format_.width && shape.height == format_.height;
    bool const good = as_announced
                          ? copy_into(buffer.get(), alphas_.info(), sent, shape, copy_alpha)
                          : convert_into(buffer.get(), alphas_.info(), sent, shape, alpha_info(shape), copy_alpha);
    return good ? std::move(buffer) : nullptr;
}

buffer_ptr picture_store::black()
{
    auto buffer = fills_.blank();
    if (!buffer)
        return nullptr;
    mapped_frame to{fills_.info(), buffer.get(), GST_MAP_WRITE};
    if (!to)
        return nullptr;
    unsigned char* const data = plane_of(to).data;
    std::size_t const size = GST_VIDEO_INFO_SIZE(&fills_.info());
    if (format_.layout == fill::bgr)
        std::memset(data, 0, size);
    else
        for (std::size_t k = 0; k + 4 <= size; k += 4)
            std::memcpy(data + k, black_uyvy, 4);
    return buffer;
}

buffer_ptr picture_store::slate(GstBuffer* last)
{
    auto const row = format_.layout == fill::bgr ? slate_of_bgr : slate_of_uyvy;
    return converted(last, fills_.info(), fills_, [row](plane from, plane to, int width, int height) {
        for (int y = 0; y < height; ++y)
            row(from.data + std::ptrdiff_t{y} * from.stride, to.data + std::ptrdiff_t{y} * to.stride, width);
    });
}

buffer_ptr restamped(GstBuffer* picture, std::int64_t time_ns)
{
    auto copy = adopt<buffer_ptr>(gst_buffer_copy(picture));
    GST_BUFFER_PTS(copy.get()) = static_cast<GstClockTime>(time_ns);
    return copy;
}

} // namespace quillo::publisher
