#include "publisher/pipeline.h"

#include "publisher/log.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

namespace quillo::publisher {

void run_on_common_clock(GstElement* pipeline)
{
    auto const clock = adopt<object_ptr<GstClock>>(gst_system_clock_obtain());
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock.get());
    gst_element_set_start_time(pipeline, GST_CLOCK_TIME_NONE);
    gst_element_set_base_time(pipeline, 0);
}

void tell_errors(GstElement* pipeline, error_teller tell)
{
    auto const take = +[](GstBus*, GstMessage* given, gpointer data) -> GstBusSyncReply {
        auto const message = adopt<message_ptr>(given);
        if (GST_MESSAGE_TYPE(given) == GST_MESSAGE_ERROR) {
            GError* problem = nullptr;
            gst_message_parse_error(given, &problem, nullptr);
            error_ptr const error{problem};
            (*static_cast<error_teller*>(data))(GST_MESSAGE_SRC_NAME(given) + std::string{": "} + error->message);
        }
        return GST_BUS_DROP;
    };
    auto const bus = adopt<bus_ptr>(gst_element_get_bus(pipeline));
    gst_bus_set_sync_handler(bus.get(), take, new error_teller{std::move(tell)},
                             [](gpointer data) { delete static_cast<error_teller*>(data); });
}

void log_error(std::string const& what) { log::error("a pipeline fails: ", what); }

pipeline::pipeline(std::string const& description, std::function<void(GstSample*)> taken, error_teller failed)
    : taken_(std::move(taken))
{
    GError* problem = nullptr;
    pipeline_ =
        adopt<element_ptr>(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem));
    error_ptr const error{problem};
    if (!pipeline_)
        throw std::runtime_error{error ? error->message : "no pipeline"};
    gst_object_ref_sink(pipeline_.get());
    in_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "in"));
    out_ = adopt<element_ptr>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "out"));
    run_on_common_clock(pipeline_.get());
    tell_errors(pipeline_.get(), std::move(failed));

    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = [](GstAppSink* sink, gpointer self) {
        return new_sample(reinterpret_cast<GstElement*>(sink), self);
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(out_.get()), &callbacks, this, nullptr);
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
}

pipeline::~pipeline() { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

GstFlowReturn pipeline::new_sample(GstElement* sink, gpointer self)
{
    auto const sample = adopt<sample_ptr>(gst_app_sink_pull_sample(GST_APP_SINK(sink)));
    if (!sample)
        return GST_FLOW_OK;
    // An encoder may count from elsewhere and say so in its segment.
    GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
    auto const time =
        gst_segment_to_running_time(gst_sample_get_segment(sample.get()), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    auto const stamped = adopt<buffer_ptr>(gst_buffer_copy(buffer));
    GST_BUFFER_PTS(stamped.get()) = time;
    GST_BUFFER_DTS(stamped.get()) = GST_CLOCK_TIME_NONE;
    auto const placed =
        adopt<sample_ptr>(gst_sample_new(stamped.get(), gst_sample_get_caps(sample.get()), nullptr, nullptr));
    static_cast<pipeline*>(self)->taken_(placed.get());
    return GST_FLOW_OK;
}

pushed pipeline::push(GstBuffer* buffer) { return push_buffer(in_.get(), buffer); }

bool has_started(GstElement* appsrc)
{
    GstState now = GST_STATE_NULL;
    gst_element_get_state(appsrc, &now, nullptr, 0);
    return now >= GST_STATE_PAUSED;
}

bool is_full(GstElement* appsrc)
{
    GstAppSrc* const src = GST_APP_SRC(appsrc);
    guint64 const limit = gst_app_src_get_max_buffers(src);
    return limit != 0 && gst_app_src_get_current_level_buffers(src) >= limit;
}

namespace {

pushed outcome(GstFlowReturn flow, bool room)
{
    return flow != GST_FLOW_OK ? pushed::refused : room ? pushed::queued : pushed::in_place_of_another;
}

} // namespace

pushed push_buffer(GstElement* appsrc, GstBuffer* buffer)
{
    bool const room = !is_full(appsrc);
    return outcome(gst_app_src_push_buffer(GST_APP_SRC(appsrc), retain(buffer).release()), room);
}

pushed push_sample(GstElement* appsrc, GstSample* sample)
{
    bool const room = !is_full(appsrc);
    return outcome(gst_app_src_push_sample(GST_APP_SRC(appsrc), sample), room);
}

} // namespace quillo::publisher
