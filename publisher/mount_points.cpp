#include "publisher/mount_points.h"

#include <algorithm>
#include <mutex>

namespace quillo::publisher {

namespace {

struct mount_points
{
    GstRTSPMountPoints parent;
};

struct mount_pointsClass
{
    GstRTSPMountPointsClass parent;
};

G_DEFINE_TYPE(mount_points, quillo_mount_points, GST_TYPE_RTSP_MOUNT_POINTS)

gchar* make_path(GstRTSPMountPoints*, GstRTSPUrl const* url)
{
    return g_strdup(url->abspath[0] ? inner_path(url->abspath).c_str() : "/");
}

void quillo_mount_points_class_init(mount_pointsClass* of) { of->parent.make_path = make_path; }

void quillo_mount_points_init(mount_points*) {}

// Only a description asks the mount points what a path is called, all other requests ask the client's class: a receiver
// that goes on with the address that it was given, and not with the base that the description names, is understood too.
void let_clients_use_inner_paths()
{
    static auto* const clients = static_cast<GstRTSPClientClass*>(g_type_class_ref(GST_TYPE_RTSP_CLIENT));
    static auto* const as_asked = clients->make_path_from_uri;
    clients->make_path_from_uri = +[](GstRTSPClient* client, GstRTSPUrl const* url) -> gchar* {
        string_ptr const path{as_asked(client, url)};
        return path ? g_strdup(inner_path(path.get()).c_str()) : nullptr;
    };
}

} // namespace

object_ptr<GstRTSPMountPoints> make_mount_points()
{
    static std::once_flag once;
    std::call_once(once, let_clients_use_inner_paths);
    return object_ptr<GstRTSPMountPoints>{
        static_cast<GstRTSPMountPoints*>(g_object_new(quillo_mount_points_get_type(), nullptr))};
}

std::string inner_path(std::string path)
{
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

object_ptr<GstRTSPMediaFactory> find_mount(GstRTSPMountPoints* points, GstRTSPUrl const* url)
{
    string_ptr const path{gst_rtsp_mount_points_make_path(points, url)};
    return object_ptr<GstRTSPMediaFactory>{gst_rtsp_mount_points_match(points, path.get(), nullptr)};
}

} // namespace quillo::publisher
