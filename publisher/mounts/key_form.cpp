#include "publisher/mounts/key_form.h"

#include "lib/format_conversion/bgr.h"
#include "lib/format_conversion/y.h"
#include "publisher/caps.h"
#include "publisher/frame_pool.h"
#include "publisher/picture_store.h"
#include "publisher/sdp.h"

#include <cstring>

namespace quillo::publisher {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

constexpr bool compress = false;
constexpr unsigned char opaque[4] = {128, 255, 128, 255};

picture_format as_uyvy(picture_format format)
{
    format.layout = fill::uyvy;
    format.width &= ~1;
    return format;
}

class key_form : public converting_form
{
    bool has_key() const override { return true; }
    caps_ptr caps(picture_format const& of_source) const override { return picture_caps(as_uyvy(of_source)); }
    void describe(GstSDPMessage& description, picture_format const& of_source) const override
    {
        describe_raw(description, as_uyvy(of_source));
        describe_key(description, as_uyvy(of_source));
    }

    void set_format(picture_format const& of_source) override;
    pictures convert(GstBuffer* fill, GstBuffer* alpha) override;
    buffer_ptr make_fill(GstBuffer* fill);
    buffer_ptr make_key(GstBuffer* alpha);
    buffer_ptr make_opaque_key();

    bool from_bgr_ = false;
    GstVideoInfo fill_info_{};
    GstVideoInfo alpha_info_{};
    frame_pool fills_;
    frame_pool keys_;
    buffer_ptr opaque_; // the key of every opaque picture
};

void key_form::set_format(picture_format const& of_source)
{
    from_bgr_ = of_source.layout == fill::bgr;
    fill_info_ = picture_info(of_source);
    alpha_info_ = alpha_info(of_source);
    fills_.set_info(picture_info(as_uyvy(of_source)));
    keys_.set_info(picture_info(as_uyvy(of_source)));
    opaque_.reset();
}

raw_form::pictures key_form::convert(GstBuffer* fill, GstBuffer* alpha)
{
    return {from_bgr_ ? make_fill(fill) : retain(fill), alpha ? make_key(alpha) : make_opaque_key()};
}

buffer_ptr key_form::make_fill(GstBuffer* fill)
{
    return converted(fill, fill_info_, fills_, [](plane const& from, plane const& to, int width, int height) {
        conversion::bgr::uyvy(from.data, from.stride, to.data, to.stride, width, height);
    });
}

buffer_ptr key_form::make_key(GstBuffer* alpha)
{
    return converted(alpha, alpha_info_, keys_, [](plane const& from, plane const& to, int width, int height) {
        conversion::y::uyvy(from.data, from.stride, to.data, to.stride, width, height, compress);
    });
}

buffer_ptr key_form::make_opaque_key()
{
    if (!opaque_) {
        auto made = keys_.blank();
        GstMapInfo map;
        if (!made || !gst_buffer_map(made.get(), &map, GST_MAP_WRITE))
            return nullptr;
        for (std::size_t k = 0; k + 4 <= map.size; k += 4)
            std::memcpy(map.data + k, opaque, 4);
        gst_buffer_unmap(made.get(), &map);
        opaque_ = std::move(made);
    }
    return adopt<buffer_ptr>(gst_buffer_copy(opaque_.get()));
}

} // namespace

std::unique_ptr<raw_form> make_key_form() { return std::make_unique<key_form>(); }

} // namespace quillo::publisher
