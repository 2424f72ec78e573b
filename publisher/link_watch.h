// Notices that an interface of this machine carries again what it did not for a while: its cable was pulled, its Wi-Fi
// was lost. What was sent shortly before has waited in the kernel for the receiver's hardware address, and goes out
// late and all at once, over UDP too.
#pragma once

#include "publisher/gst_ptr.h"
#include "sender/open/descriptor.h"

#include <cstddef>
#include <functional>
#include <set>
#include <span>

namespace quillo::publisher {

// Which interfaces do not carry anything just now, as far as the kernel's messages (rtnetlink(7)) tell.
class idle_links
{
  public:
    // Takes a datagram of whole messages, from the kernel. Whether one of these interfaces is back.
    bool take(std::span<std::byte const> messages);

  private:
    std::set<int> indexes_;
};

class link_watch
{
  public:
    // To be made and ended on the thread that runs the context, where back is called. Where the kernel does not tell,
    // it never is.
    link_watch(GMainContext* context, std::function<void()> back);
    link_watch(link_watch const&) = delete;
    link_watch& operator=(link_watch const&) = delete;
    ~link_watch();

  private:
    void read();

    std::function<void()> const back_;
    open::descriptor socket_;
    idle_links idle_;
    g_source_ptr readable_;
};

} // namespace quillo::publisher
