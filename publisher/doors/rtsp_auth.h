// What gst-rtsp-server asks at its door: who may connect, under which certificate, with which password.
#pragma once

#include "publisher/doors/doors.h"

#include <memory>
#include <string>

namespace quillo::publisher {

// The name under which mounts let those in who know the password.
inline constexpr char const* viewer_role = "viewer";

struct rtsp_locks
{
    std::string user; // empty: no password is asked for
    std::string password;
    std::shared_ptr<GTlsCertificate> certificate; // null: connections are not encrypted
};

// For connections from now on; those that are there keep what they came in with.
object_ptr<GstRTSPAuth> make_rtsp_auth(std::shared_ptr<doors> at, rtsp_locks const& locks);

// Lets the role in.
void open_to_viewers(GstRTSPMediaFactory* factory);

} // namespace quillo::publisher
