// The default mount: H.264 and Opus in packets of at most 1400 bytes, over UDP or TCP. Encoded once for all viewers,
// packed into packets for each. A viewer too slow for it goes on at a later key frame.
#pragma once

#include "publisher/encoded_feed.h"
#include "publisher/mounts/mount.h"
#include "publisher/source.h"

#include <memory>
#include <mutex>

namespace quillo::publisher {

class encoded_mount : public mount, public std::enable_shared_from_this<encoded_mount>
{
  public:
    encoded_mount(std::shared_ptr<source> of, std::shared_ptr<receivers> all, encoder_choice choice)
        : source_(std::move(of)), all_(std::move(all)), choice_(std::move(choice))
    {
    }

    std::unique_ptr<viewer> open() override;
    bool full() const override;
    bool tcp_only() const override { return false; }

    source& of() { return *source_; }

    // The encoders run from the first viewer to the last.
    void attach(encoded_viewer& who);
    void detach(encoded_viewer& who);
    void request_key_frame();

    encoder_losses lost() const; // ever

  private:
    std::shared_ptr<source> const source_;
    std::shared_ptr<receivers> const all_;
    encoder_choice const choice_;

    mutable std::mutex mutex_;
    std::unique_ptr<encoded_feed> feed_;
    encoder_losses lost_before_; // by the feeds before this one
};

} // namespace quillo::publisher
