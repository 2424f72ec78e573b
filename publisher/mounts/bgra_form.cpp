#include "publisher/mounts/bgra_form.h"

#include "lib/format_conversion/uyvy_a.h"
#include "publisher/caps.h"
#include "publisher/frame_pool.h"
#include "publisher/picture_copy.h"
#include "publisher/sdp.h"

#include <cstddef>

namespace quillo::publisher {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

picture_format as_bgra(picture_format format)
{
    format.layout = fill::bgra;
    return format;
}

class bgra_form : public converting_form
{
    caps_ptr caps(picture_format const& of_source) const override { return picture_caps(as_bgra(of_source)); }
    void describe(GstSDPMessage& description, picture_format const& of_source) const override
    {
        describe_raw(description, as_bgra(of_source));
        describe_alpha(description);
    }

    void set_format(picture_format const& of_source) override;
    pictures convert(GstBuffer* fill, GstBuffer* alpha) override;
    GstBuffer* opaque();

    bool from_bgr_ = false;
    GstVideoInfo fill_info_{};
    frame_pool alphas_;
    frame_pool joined_;
    buffer_ptr opaque_; // the alpha of every opaque picture
};

void bgra_form::set_format(picture_format const& of_source)
{
    from_bgr_ = of_source.layout == fill::bgr;
    fill_info_ = picture_info(of_source);
    alphas_.set_info(alpha_info(of_source));
    joined_.set_info(picture_info(as_bgra(of_source)));
    opaque_.reset();
}

GstBuffer* bgra_form::opaque()
{
    if (!opaque_ && (opaque_ = alphas_.blank()))
        gst_buffer_memset(opaque_.get(), 0, 255, gst_buffer_get_size(opaque_.get()));
    return opaque_.get();
}

raw_form::pictures bgra_form::convert(GstBuffer* fill, GstBuffer* alpha)
{
    if (!alpha)
        alpha = opaque();
    if (!alpha)
        return {};
    mapped_frame alphas{alphas_.info(), alpha, GST_MAP_READ};
    if (!alphas)
        return {};
    plane const beside = plane_of(alphas);
    return {converted(fill, fill_info_, joined_,
                      [&](plane const& from, plane const& to, int width, int height) {
                          if (!from_bgr_)
                              return conversion::uyvy_a::bgra_709(from.data, from.stride, beside.data, beside.stride,
                                                                  to.data, to.stride, width, height);
                          for (std::ptrdiff_t y = 0; y < height; ++y)
                              join_alpha(from.data + y * from.stride, beside.data + y * beside.stride,
                                         to.data + y * to.stride, static_cast<std::size_t>(width));
                      }),
            nullptr};
}

} // namespace

std::unique_ptr<raw_form> make_bgra_form() { return std::make_unique<bgra_form>(); }

} // namespace quillo::publisher
