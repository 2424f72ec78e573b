#include "publisher/mounts/connection_medias.h"

#include <utility>

namespace quillo::publisher {

connection_medias& connection_medias::of(GstRTSPClient* client)
{
    constexpr char const* key = "quillo-medias";
    if (auto* const known = static_cast<connection_medias*>(g_object_get_data(G_OBJECT(client), key)))
        return *known;
    auto* const made = new connection_medias;
    g_object_set_data_full(G_OBJECT(client), key, made,
                           [](gpointer medias) { delete static_cast<connection_medias*>(medias); });
    g_signal_connect(
        client, "closed",
        G_CALLBACK(+[](GstRTSPClient*, gpointer medias) { static_cast<connection_medias*>(medias)->end(); }), made);
    return *made;
}

void connection_medias::add(GstRTSPMedia* one)
{
    std::erase_if(medias_, [](auto const& media) { return !media.lock(); });
    medias_.emplace_back(one);
}

void connection_medias::end()
{
    for (auto const& one : std::exchange(medias_, {}))
        if (auto const media = one.lock())
            gst_rtsp_media_unprepare(media.get());
}

} // namespace quillo::publisher
