#include "publisher/receivers.h"

#include "publisher/log.h"
#include "publisher/slug.h"

#include <algorithm>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_agent = 120;

std::shared_ptr<GWeakRef> weak_reference(GstRTSPClient* client)
{
    std::shared_ptr<GWeakRef> weak{new GWeakRef, [](GWeakRef* reference) {
                                       g_weak_ref_clear(reference);
                                       delete reference;
                                   }};
    g_weak_ref_init(weak.get(), client);
    return weak;
}

} // namespace

void receiver::identify(GstRTSPContext const& request)
{
    std::lock_guard const lock{mutex_};
    if (request.conn)
        address_ = gst_rtsp_connection_get_ip(request.conn);
    if (request.client)
        client_ = weak_reference(request.client);
    gchar* agent = nullptr;
    if (request.request &&
        gst_rtsp_message_get_header(request.request, GST_RTSP_HDR_USER_AGENT, &agent, 0) == GST_RTSP_OK)
        agent_ = clean_name(agent, max_agent);
}

void receiver::set_transport(std::string transport)
{
    std::lock_guard const lock{mutex_};
    transport_ = std::move(transport);
}

std::string receiver::address() const
{
    std::lock_guard const lock{mutex_};
    return address_;
}

std::string receiver::agent() const
{
    std::lock_guard const lock{mutex_};
    return agent_;
}

std::string receiver::transport() const
{
    std::lock_guard const lock{mutex_};
    return transport_;
}

object_ptr<GstRTSPClient> receiver::client() const
{
    std::lock_guard const lock{mutex_};
    return object_ptr<GstRTSPClient>{client_ ? static_cast<GstRTSPClient*>(g_weak_ref_get(client_.get())) : nullptr};
}

receiver_ptr receivers::admit(std::string const& source_path, std::string const& mount, std::size_t limit)
{
    std::lock_guard const lock{mutex_};
    auto const there =
        static_cast<std::size_t>(std::count_if(receivers_.begin(), receivers_.end(), [&](auto const& who) {
            return who->path() == source_path && who->mount() == mount;
        }));
    if (there >= limit) {
        log::warning(source_path, ' ', mount, ": refused a viewer, ", there, " are there already");
        return nullptr;
    }
    receivers_.push_back(std::make_shared<receiver>(source_path, mount));
    return receivers_.back();
}

void receivers::dismiss(receiver_ptr const& who)
{
    std::lock_guard const lock{mutex_};
    std::erase(receivers_, who);
}

std::vector<receiver_ptr> receivers::all() const
{
    std::lock_guard const lock{mutex_};
    return receivers_;
}

} // namespace quillo::publisher
