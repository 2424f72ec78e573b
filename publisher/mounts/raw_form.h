// What a raw mount makes of its source's pictures. One object serves all viewers of a mount and lives while there is
// one, so that what has to be converted is converted once.
#pragma once

#include "publisher/formats.h"
#include "publisher/gst_ptr.h"

#include <memory>
#include <optional>

namespace quillo::publisher {

class raw_form
{
  public:
    struct pictures
    {
        buffer_ptr fill;
        buffer_ptr key; // of the same time and size; null in forms without
    };

    virtual ~raw_form() = default;

    virtual bool has_key() const { return false; } // as a second stream of pictures
    virtual caps_ptr caps(picture_format const& of_source) const = 0;
    virtual void describe(GstSDPMessage& description, picture_format const& of_source) const = 0;

    // Comes with the source's lock held. Nulls when there is no memory.
    virtual pictures make(picture_format const& of_source, GstBuffer* fill, GstBuffer* alpha) = 0;
};

// Remembers the last pictures, for the other viewers.
class converting_form : public raw_form
{
  public:
    pictures make(picture_format const& of_source, GstBuffer* fill, GstBuffer* alpha) final;

  private:
    // Pictures of another shape come from here on.
    virtual void set_format(picture_format const& of_source) = 0;
    virtual pictures convert(GstBuffer* fill, GstBuffer* alpha) = 0;

    std::optional<picture_format> format_;
    GstClockTime last_time_ = GST_CLOCK_TIME_NONE;
    pictures last_;
};

// The source's fill as it is.
std::unique_ptr<raw_form> make_plain_form();

} // namespace quillo::publisher
