// One elementary stream of an input, decoded a little ahead.
#pragma once

#include "lib/gst/gst_ptr.h"
#include "tools/stand_in_host/media/orientation.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace quillo::stand_in {

// Sound and picture are read by two of these, each with a pipeline of its own: either can wait or search without
// holding up the other. Throws input_error where the input fails.
class stream_reader
{
  public:
    enum class kind { video, audio };

    using nanoseconds = std::chrono::nanoseconds;

    // Opens a URI and decodes the first buffer. name is what the user called the input.
    stream_reader(std::string const& uri, std::string const& name, kind wanted);
    stream_reader(stream_reader const&) = delete;
    stream_reader& operator=(stream_reader const&) = delete;

    // False where the input has no such stream; nothing else may be called then.
    bool exists() const { return first != nullptr; }

    // Of a video stream: whether the input has sound as well.
    bool has_audio_too() const { return saw_audio; }

    // How a video stream's pictures are to be shown.
    orientation shown() const { return upright; }

    // What the decoder gives, known from the first buffer on.
    GstCaps* caps() const;

    // The next buffer; null at the end of the stream.
    sample_ptr next();

    // The buffer that next would give, kept.
    GstSample* peek();

    // The next buffer is the first one that lasts beyond the given time or, where the input's times cannot be relied on
    // after a search, the very first. False where the input cannot be searched.
    bool seek(nanoseconds position);

    // Whether seek works: a file's stream, not a live one.
    bool is_searchable() const;

    std::optional<nanoseconds> duration() const;

    // Whether times count from 0 at the input's start. If not, the first picture's time is 0.
    bool counts_from_start() const { return !imprecise && is_searchable(); }

  private:
    struct callbacks;

    // No streaming thread runs any more once a pipeline is stopped.
    struct stop_and_release
    {
        void operator()(GstElement* running) const;
    };

    void open();
    GstElement* make(char const* element) const;
    sample_ptr try_pull();
    sample_ptr pull();
    void check_bus();
    void link(GstPad* pad);
    void fail(GstMessage* error_message);

    std::string uri;
    std::string name;
    kind wanted;
    std::atomic<orientation> upright{}; // these five are written by streaming threads
    std::atomic<bool> imprecise = false;
    std::atomic<bool> saw_audio = false;
    std::atomic<bool> complete = false; // all streams are known
    std::atomic<bool> linked = false;
    element_ptr convert;
    element_ptr sink;
    std::unique_ptr<GstElement, stop_and_release> pipeline; // behind all that its threads use
    bus_ptr bus;
    sample_ptr first; // kept for its caps
    sample_ptr held;
    std::string missing_decoder;
    bool absent = false;
};

// When a sample begins on its stream's own time line; may be negative.
std::chrono::nanoseconds stream_time(GstSample* sample);

} // namespace quillo::stand_in
