#include "publisher/picture_store.h"

#include "publisher/caps.h"

#include <cstring>

namespace quillo::publisher {

namespace {

constexpr unsigned char black_uyvy[4] = {128, 16, 128, 16};

void copy_into(mapped_frame& frame, sent_picture const& sent, picture_format const& shape)
{
    copy_fill(sent, shape, static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(frame.get(), 0)),
              static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(frame.get(), 0)));
}

} // namespace

void picture_store::set_format(picture_format const& format)
{
    if (has_format_ && format == format_)
        return;
    clear();
    format_ = format;
    info_ = picture_info(format);
    has_format_ = true;
}

void picture_store::clear()
{
    if (pool_)
        gst_buffer_pool_set_active(pool_.get(), FALSE);
    pool_.reset();
}

buffer_ptr picture_store::blank()
{
    if (!pool_) {
        pool_ = adopt<pool_ptr>(gst_buffer_pool_new());
        GstStructure* const config = gst_buffer_pool_get_config(pool_.get());
        gst_buffer_pool_config_set_params(config, picture_caps(format_).get(),
                                          static_cast<guint>(GST_VIDEO_INFO_SIZE(&info_)), 0, 0);
        if (!gst_buffer_pool_set_config(pool_.get(), config) || !gst_buffer_pool_set_active(pool_.get(), TRUE))
            return nullptr;
    }
    GstBuffer* buffer = nullptr;
    if (gst_buffer_pool_acquire_buffer(pool_.get(), &buffer, nullptr) != GST_FLOW_OK)
        return nullptr;
    return adopt<buffer_ptr>(buffer);
}

buffer_ptr picture_store::take(sent_picture const& sent, picture_format const& shape)
{
    auto buffer = blank();
    if (!buffer)
        return nullptr;
    mapped_frame to{info_, buffer.get(), GST_MAP_WRITE};
    if (!to)
        return nullptr;
    if (shape.width == format_.width && shape.height == format_.height && shape.layout == format_.layout) {
        copy_into(to, sent, shape);
        return buffer;
    }

    // A single frame of another shape does not change what was announced.
    GstVideoInfo const odd_info = picture_info(shape);
    auto const odd = adopt<buffer_ptr>(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&odd_info), nullptr));
    video_converter_ptr const converter{gst_video_converter_new(const_cast<GstVideoInfo*>(&odd_info), &info_, nullptr)};
    if (!odd || !converter)
        return nullptr;
    {
        mapped_frame in{odd_info, odd.get(), GST_MAP_WRITE};
        copy_into(in, sent, shape);
    }
    mapped_frame in{odd_info, odd.get(), GST_MAP_READ};
    gst_video_converter_frame(converter.get(), in.get(), to.get());
    return buffer;
}

buffer_ptr picture_store::black()
{
    auto buffer = blank();
    if (!buffer)
        return nullptr;
    mapped_frame const to{info_, buffer.get(), GST_MAP_WRITE};
    if (!to)
        return nullptr;
    auto* const data = static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(const_cast<mapped_frame&>(to).get(), 0));
    std::size_t const size = GST_VIDEO_INFO_SIZE(&info_);
    if (format_.layout == fill::bgr)
        std::memset(data, 0, size);
    else
        for (std::size_t k = 0; k + 4 <= size; k += 4)
            std::memcpy(data + k, black_uyvy, 4);
    return buffer;
}

buffer_ptr restamped(GstBuffer* picture, std::int64_t time_ns)
{
    auto copy = adopt<buffer_ptr>(gst_buffer_copy(picture));
    GST_BUFFER_PTS(copy.get()) = static_cast<GstClockTime>(time_ns);
    return copy;
}

} // namespace quillo::publisher
