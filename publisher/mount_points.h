// The paths of the RTSP server. gst-rtsp-server walks its sorted paths from "/name" on, and gives up where something
// stands before "/name/raw" that does not belong to "/name": "/name-2" does. So a '-' is a '_' in there, which comes
// behind every '/'. Both ways of writing it serve.
#pragma once

#include "publisher/gst_ptr.h"

#include <string>

namespace quillo::publisher {

object_ptr<GstRTSPMountPoints> make_mount_points();

// As a path stands in there.
std::string inner_path(std::string path);

// What serves an address, null for nothing.
object_ptr<GstRTSPMediaFactory> find_mount(GstRTSPMountPoints* points, GstRTSPUrl const* url);

} // namespace quillo::publisher
