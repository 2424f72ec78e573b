// What the payloaders leave out of a description.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

#include <string>

namespace quillo::publisher {

// Exact rate, range, transfer characteristics, matrix and pixel aspect of raw pictures into the first media's fmtp.
void describe_raw(GstSDPMessage& description, picture_format const& format);

// The second stream of pictures is the key of the first: alpha as luma in full range, straight.
void describe_key(GstSDPMessage& description, picture_format const& format);

// The pictures of the first media carry straight alpha.
void describe_alpha(GstSDPMessage& description);

// For any mount: name of the source, tool, and the layout of the fields, which the payload formats cannot say without
// splitting the frame.
void describe_source(GstSDPMessage& description, picture_format const& format, std::string const& name);

} // namespace quillo::publisher
