// The owning pointers, with the headers of what only the publisher speaks: RTSP and its descriptions.
#pragma once

#include "lib/gst/gst_ptr.h"

#include <gst/rtsp-server/rtsp-server.h>
#include <gst/sdp/gstsdpmessage.h>
