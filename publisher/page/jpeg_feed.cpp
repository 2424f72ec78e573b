#include "publisher/page/jpeg_feed.h"

#include "publisher/caps.h"
#include "publisher/log.h"

#include <algorithm>
#include <sstream>

namespace quillo::publisher {

namespace {

bytes_ptr bytes_of(GstBuffer* buffer)
{
    gsize const size = gst_buffer_get_size(buffer);
    void* const copy = g_malloc(size);
    gst_buffer_extract(buffer, 0, copy, size);
    return bytes_ptr{g_bytes_new_take(copy, size)};
}

} // namespace

std::string jpeg_pipeline(picture_format const& format)
{
    double const shrink = std::min({1.0, static_cast<double>(jpeg_feed::widest) / format.width,
                                    static_cast<double>(jpeg_feed::highest) / format.height});
    auto const side = [&](int length) { return std::max(2, static_cast<int>(length * shrink) & ~1); };
    string_ptr const caps{gst_caps_to_string(picture_caps(format).get())};
    std::ostringstream text;
    text << "appsrc name=in is-live=true format=time max-buffers=1 max-bytes=0 leaky-type=downstream caps=\""
         << caps.get() << "\" ! ";
    if (shrink < 1)
        text << "videoscale method=bilinear add-borders=false ! video/x-raw,width=" << side(format.width)
             << ",height=" << side(format.height) << " ! ";
    // What a JPEG file means by its numbers: BT.601's matrix, full range.
    text << "videoconvert ! video/x-raw,format=I420,colorimetry=1:4:0:0 ! jpegenc quality=80 ! "
            "appsink name=out sync=false max-buffers=2";
    return text.str();
}

jpeg_feed::~jpeg_feed()
{
    if (!viewers_.empty())
        source_->remove(*this);
    encoder_.reset();
}

void jpeg_feed::add(jpeg_viewer& who)
{
    viewers_.push_back(&who);
    if (viewers_.size() == 1)
        source_->add(*this);
    else
        source_->hurry();
}

void jpeg_feed::remove(jpeg_viewer& who)
{
    if (std::erase(viewers_, &who) == 0 || !viewers_.empty())
        return;
    source_->remove(*this);
    encoder_.reset();
    pictures_.reset();
}

void jpeg_feed::format(picture_format const& pictures, sound_format const&)
{
    if (pictures_ == pictures)
        return;
    encoder_.reset();
    pictures_ = pictures;
    every_ =
        (pictures.rate.n + most_pictures_a_second * pictures.rate.d - 1) / (most_pictures_a_second * pictures.rate.d);
    skipped_ = every_;
    try {
        encoder_ = std::make_unique<pipeline>(jpeg_pipeline(pictures), [this](GstSample* jpeg) { encoded(jpeg); });
    } catch (std::runtime_error const& error) {
        log::error("page: no JPEG pictures: ", error.what());
    }
}

void jpeg_feed::picture(GstBuffer* fill)
{
    if (++skipped_ < every_ || !encoder_)
        return;
    skipped_ = 0;
    encoder_->push(fill);
}

void jpeg_feed::ended()
{
    loop_.post([weak = weak_from_this()] {
        auto const self = weak.lock();
        if (!self)
            return;
        auto const all = self->viewers_; // they may leave while they are told
        for (auto* const who : all)
            who->ended();
    });
}

void jpeg_feed::encoded(GstSample* jpeg)
{
    auto bytes = bytes_of(gst_sample_get_buffer(jpeg));
    std::lock_guard const lock{latest_mutex_};
    bool const told = latest_ != nullptr;
    latest_ = std::move(bytes);
    if (!told)
        loop_.post([weak = weak_from_this()] {
            if (auto const self = weak.lock())
                self->distribute();
        });
}

void jpeg_feed::distribute()
{
    bytes_ptr picture;
    {
        std::lock_guard const lock{latest_mutex_};
        picture = std::move(latest_);
    }
    auto const all = viewers_;
    for (auto* const who : all)
        who->jpeg(picture.get());
}

} // namespace quillo::publisher
