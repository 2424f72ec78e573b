// Reads a decoded picture component by component, as lines of 8-bit samples at full width.
#pragma once

#include <gst/video/video.h>

#include <vector>

namespace quillo::stand_in {

// One component of a mapped frame. Subsampled components are repeated, sample by sample and row by row, so that every
// second pixel's value is the file's own; in an interlaced picture rows are repeated within their field. Deeper
// samples are rounded to 8 bits.
class component_reader
{
  public:
    // The frame must stay mapped while the reader is in use.
    component_reader(GstVideoFrame const& frame, int component, bool interlaced);

    // Row y of the picture, width samples; valid until the next call.
    unsigned char const* line(int y);

  private:
    void expand(unsigned char const* from);

    unsigned char const* data;
    int stride;
    int pixel_stride;
    int width;
    int rows; // of this component
    int sub_x;
    int sub_y;
    int depth;
    int shift;
    bool interlaced;
    int expanded_row = -1;
    std::vector<unsigned char> expanded;
};

// The formats that component_reader takes, as a caps "format" list.
extern char const* const readable_formats;

} // namespace quillo::stand_in
