#include "publisher/page/early_key.h"

#include "lib/gst/gst_ptr.h"

namespace quillo::publisher {

early_key::early_key()
    : thread_{[] {
          // Without the plug-in there are no such transports either, and pictures come as JPEG.
          adopt<element_ptr>(gst_element_factory_make("dtlsdec", nullptr));
      }}
{
}

early_key::~early_key() { thread_.join(); }

} // namespace quillo::publisher
