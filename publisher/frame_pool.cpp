#include "publisher/frame_pool.h"

namespace quillo::publisher {

void frame_pool::set_info(GstVideoInfo const& info)
{
    clear();
    info_ = info;
    // Made at once, though nobody may ever need it: a pool has descriptors of its own, and a publisher whose
    // descriptors grow in its first bad minute looks as if it leaked.
    pool_ = adopt<pool_ptr>(gst_buffer_pool_new());
    GstStructure* const config = gst_buffer_pool_get_config(pool_.get());
    gst_buffer_pool_config_set_params(config, nullptr, static_cast<guint>(GST_VIDEO_INFO_SIZE(&info_)), 0, 0);
    gst_buffer_pool_set_config(pool_.get(), config);
}

void frame_pool::clear()
{
    if (pool_)
        gst_buffer_pool_set_active(pool_.get(), FALSE);
}

buffer_ptr frame_pool::blank()
{
    if (!pool_ || !gst_buffer_pool_set_active(pool_.get(), TRUE))
        return nullptr;
    GstBuffer* buffer = nullptr;
    if (gst_buffer_pool_acquire_buffer(pool_.get(), &buffer, nullptr) != GST_FLOW_OK)
        return nullptr;
    return adopt<buffer_ptr>(buffer);
}

plane plane_of(mapped_frame& frame)
{
    return {static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(frame.get(), 0)),
            GST_VIDEO_FRAME_PLANE_STRIDE(frame.get(), 0)};
}

} // namespace quillo::publisher
