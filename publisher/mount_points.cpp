#include "publisher/mount_points.h"

#include <algorithm>

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

} // namespace

object_ptr<GstRTSPMountPoints> make_mount_points()
{
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
