// /raw: uncompressed pictures (RFC 4175) and L24 sound, over TCP in packets of 60000 bytes, for receivers with the
// bandwidth. Each viewer has payloaders of its own behind a queue of two pictures: a slow one gets fewer whole pictures
// and harms nobody.
#pragma once

#include "publisher/mounts/mount.h"
#include "publisher/source.h"

namespace quillo::publisher {

class raw_mount : public mount
{
  public:
    raw_mount(std::shared_ptr<source> of, std::shared_ptr<receivers> all) : source_(std::move(of)), all_(std::move(all))
    {
    }

    std::unique_ptr<viewer> open() override;
    bool tcp_only() const override { return true; }

  private:
    std::shared_ptr<source> const source_;
    std::shared_ptr<receivers> const all_;
};

} // namespace quillo::publisher
