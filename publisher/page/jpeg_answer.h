// One browser's picture: a stream of JPEGs, or a single one. A browser that is slow gets fewer of them.
#pragma once

#include "publisher/page/http_server.h"
#include "publisher/page/jpeg_feed.h"
#include "publisher/receivers.h"

#include <functional>

namespace quillo::publisher {

class jpeg_answer : jpeg_viewer
{
  public:
    enum class kind { live, still };

    // who is already admitted. The object belongs to the request and calls gone when that is over.
    jpeg_answer(http_server& server, SoupServerMessage* request, kind what, std::shared_ptr<jpeg_feed> feed,
                std::shared_ptr<receivers> all, receiver_ptr who, std::function<void(jpeg_answer*)> gone);
    jpeg_answer(jpeg_answer const&) = delete;
    jpeg_answer& operator=(jpeg_answer const&) = delete;
    ~jpeg_answer() override;

    jpeg_feed const& feed() const { return *feed_; }

  private:
    void jpeg(GBytes* picture) override;
    void ended() override;
    void written();
    void send(GBytes* picture);

    http_server& server_;
    SoupServerMessage* const request_;
    kind const kind_;
    std::shared_ptr<jpeg_feed> const feed_;
    std::shared_ptr<receivers> const all_;
    receiver_ptr const who_;
    std::function<void(jpeg_answer*)> const gone_;
    bool under_way_ = false; // something given to the connection that it has not taken yet
    bytes_ptr next_;
    bool finished_ = false;
};

} // namespace quillo::publisher
