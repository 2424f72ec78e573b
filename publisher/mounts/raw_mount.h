// /raw, /raw+key and /bgra: uncompressed pictures (RFC 4175) and L24 sound, over TCP in packets of 60000 bytes, for
// receivers with the bandwidth. Each viewer has payloaders of its own behind a queue of two pictures: a slow one gets
// fewer whole pictures and harms nobody.
#pragma once

#include "publisher/mounts/mount.h"
#include "publisher/mounts/raw_form.h"
#include "publisher/source.h"

namespace quillo::publisher {

class raw_mount : public mount
{
  public:
    using form_maker = std::unique_ptr<raw_form> (*)();

    raw_mount(std::shared_ptr<source> of, std::shared_ptr<receivers> all, std::string name, form_maker make)
        : source_(std::move(of)), all_(std::move(all)), name_(std::move(name)), make_(make)
    {
    }

    std::unique_ptr<viewer> open() override;
    bool full() const override;
    bool tcp_only() const override { return true; }

  private:
    std::shared_ptr<source> const source_;
    std::shared_ptr<receivers> const all_;
    std::string const name_;
    form_maker const make_;

    std::mutex mutex_;
    std::weak_ptr<raw_form> form_; // its viewers keep it
};

} // namespace quillo::publisher
