#include "publisher/mounts/raw_form.h"

#include "publisher/caps.h"
#include "publisher/sdp.h"

namespace quillo::publisher {

namespace {

class plain_form : public raw_form
{
    caps_ptr caps(picture_format const& of_source) const override { return picture_caps(of_source); }
    void describe(GstSDPMessage& description, picture_format const& of_source) const override
    {
        describe_raw(description, of_source);
    }
    pictures make(picture_format const&, GstBuffer* fill, GstBuffer*) override { return {retain(fill), nullptr}; }
};

buffer_ptr another(buffer_ptr const& buffer) { return buffer ? retain(buffer.get()) : nullptr; }

} // namespace

std::unique_ptr<raw_form> make_plain_form() { return std::make_unique<plain_form>(); }

raw_form::pictures converting_form::make(picture_format const& of_source, GstBuffer* fill, GstBuffer* alpha)
{
    if (format_ != of_source) {
        format_ = of_source;
        last_time_ = GST_CLOCK_TIME_NONE;
        set_format(of_source);
    }
    // No two pictures of a source have the same time.
    if (last_time_ != GST_BUFFER_PTS(fill)) {
        last_ = convert(fill, alpha);
        last_time_ = GST_BUFFER_PTS(fill);
        for (auto* const made : {last_.fill.get(), last_.key.get()})
            if (made && made != fill)
                GST_BUFFER_PTS(made) = last_time_;
    }
    return {another(last_.fill), another(last_.key)};
}

} // namespace quillo::publisher
