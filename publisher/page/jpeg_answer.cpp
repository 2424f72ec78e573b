#include "publisher/page/jpeg_answer.h"

#include <string>

namespace quillo::publisher {

namespace {

// A browser shows a picture when it sees the boundary behind it, so that goes out with the picture.
constexpr char const* type = "multipart/x-mixed-replace; boundary=picture";
constexpr std::string_view boundary = "--picture\r\n";

bytes_ptr as_part(GBytes* picture)
{
    gsize size = 0;
    auto const* const data = static_cast<char const*>(g_bytes_get_data(picture, &size));
    std::string part = "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n";
    part.reserve(part.size() + size + 2 + boundary.size());
    part.append(data, size).append("\r\n").append(boundary);
    return bytes_ptr{g_bytes_new(part.data(), part.size())};
}

} // namespace

jpeg_answer::jpeg_answer(http_server& server, SoupServerMessage* request, kind what, std::shared_ptr<jpeg_feed> feed,
                         std::shared_ptr<receivers> all, receiver_ptr who, std::function<void(jpeg_answer*)> gone)
    : server_(server), request_(request), kind_(what), feed_(std::move(feed)), all_(std::move(all)),
      who_(std::move(who)), gone_(std::move(gone))
{
    auto const on_finished = +[](SoupServerMessage*, gpointer self) {
        auto* const answer = static_cast<jpeg_answer*>(self);
        answer->finished_ = true;
        auto const over = answer->gone_; // which ends the object
        over(answer);
    };
    g_signal_connect(request_, "finished", G_CALLBACK(on_finished), this);
    soup_server_message_set_status(request_, SOUP_STATUS_OK, nullptr);
    if (kind_ == kind::live) {
        auto const on_written = +[](SoupServerMessage*, gpointer self) { static_cast<jpeg_answer*>(self)->written(); };
        g_signal_connect(request_, "wrote-chunk", G_CALLBACK(on_written), this);
        auto* const headers = soup_server_message_get_response_headers(request_);
        soup_message_headers_replace(headers, "Content-Type", type);
        soup_message_headers_set_encoding(headers, SOUP_ENCODING_EOF);
        auto* const body = soup_server_message_get_response_body(request_);
        soup_message_body_set_accumulate(body, FALSE);
        soup_message_body_append(body, SOUP_MEMORY_STATIC, boundary.data(), boundary.size());
        under_way_ = true;
    } else {
        soup_server_message_pause(request_);
    }
    feed_->add(*this);
}

jpeg_answer::~jpeg_answer()
{
    g_signal_handlers_disconnect_by_data(request_, this);
    feed_->remove(*this);
    all_->dismiss(who_);
}

void jpeg_answer::jpeg(GBytes* picture)
{
    if (finished_)
        return;
    if (kind_ == kind::still) {
        gsize size = 0;
        auto const* const data = static_cast<char const*>(g_bytes_get_data(picture, &size));
        answer(request_, SOUP_STATUS_OK, "image/jpeg", {data, size});
        finished_ = true;
        ++who_->frames_sent;
        soup_server_message_unpause(request_);
    } else if (under_way_) {
        if (next_)
            ++who_->frames_dropped;
        next_.reset(g_bytes_ref(picture));
    } else {
        send(picture);
    }
}

void jpeg_answer::send(GBytes* picture)
{
    under_way_ = true;
    ++who_->frames_sent;
    who_->playing = true;
    soup_message_body_append_bytes(soup_server_message_get_response_body(request_), as_part(picture).get());
    soup_server_message_unpause(request_);
}

void jpeg_answer::written()
{
    server_.progress(request_);
    under_way_ = false;
    if (auto const next = std::move(next_))
        send(next.get());
}

void jpeg_answer::ended()
{
    if (finished_)
        return;
    finished_ = true;
    if (kind_ == kind::still)
        answer(request_, SOUP_STATUS_NOT_FOUND, "text/plain", "the source has gone\n");
    else
        soup_message_body_complete(soup_server_message_get_response_body(request_));
    soup_server_message_unpause(request_);
}

} // namespace quillo::publisher
