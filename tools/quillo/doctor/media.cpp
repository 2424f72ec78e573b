#include "publisher/caps.h"
#include "publisher/encoder.h"
#include "publisher/picture_store.h"
#include "publisher/pipeline.h"
#include "tools/quillo/doctor/finding.h"

#include <array>
#include <chrono>
#include <map>
#include <semaphore>

namespace quillo::doctor {

namespace {

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;

constexpr int pictures = 60;
constexpr int slowest = 60; // pictures a second; less cannot be called live with anything beside it

struct needed
{
    char const* element;
    char const* package;
    char const* use;
};

constexpr std::array<needed, 15> all_needed{{
    {"appsrc", "gstreamer1.0-plugins-base", "everything"},
    {"videoconvert", "gstreamer1.0-plugins-base", "the compressed mount"},
    {"videoscale", "gstreamer1.0-plugins-base", "the compressed mount"},
    {"audioconvert", "gstreamer1.0-plugins-base", "the compressed mount"},
    {"audioresample", "gstreamer1.0-plugins-base", "the compressed mount"},
    {"opusenc", "gstreamer1.0-plugins-base", "sound of the compressed mount"},
    {"rtpbin", "gstreamer1.0-plugins-good", "everything"},
    {"rtpvrawpay", "gstreamer1.0-plugins-good", "the uncompressed mounts"},
    {"rtpL24pay", "gstreamer1.0-plugins-good", "sound of the uncompressed mounts"},
    {"rtph264pay", "gstreamer1.0-plugins-good", "the compressed mount"},
    {"rtpopuspay", "gstreamer1.0-plugins-good", "sound of the compressed mount"},
    {"h264parse", "gstreamer1.0-plugins-bad", "the compressed mount"},
    {"jpegenc", "gstreamer1.0-plugins-good", "the page"},
    {"webrtcbin", "gstreamer1.0-plugins-bad", "the page's live pictures"},
    {"nicesrc", "gstreamer1.0-nice", "the page's live pictures"},
}};

bool is_there(char const* element)
{
    return adopt<object_ptr<GstElementFactory>>(gst_element_factory_find(element)) != nullptr;
}

// Moving slopes: nothing to skip, and nothing that cannot be encoded well.
buffer_ptr picture(publisher::picture_format const& format, int number)
{
    auto const info = publisher::picture_info(format);
    auto made = adopt<buffer_ptr>(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr));
    GstMapInfo map;
    if (gst_buffer_map(made.get(), &map, GST_MAP_WRITE)) {
        for (std::size_t k = 0; k < map.size; ++k)
            map.data[k] = static_cast<guint8>(64 + (k / 40 + static_cast<std::size_t>(number) * 3) % 128);
        gst_buffer_unmap(made.get(), &map);
    }
    GST_BUFFER_PTS(made.get()) = gst_util_uint64_scale_int(GST_SECOND, number, 60);
    return made;
}

// Pictures a second, one after the other; 0 when it stops.
int speed(publisher::encoder_choice const& choice)
{
    publisher::picture_format format;
    format.rate = {60, 1};
    std::vector<buffer_ptr> given;
    for (int k = 0; k < pictures; ++k)
        given.push_back(picture(format, k));
    std::counting_semaphore<> units{0};
    publisher::pipeline trial{publisher::encoding_pipeline(choice, format), [&](GstSample*) { units.release(); }};
    auto const began = clock::now();
    for (auto const& one : given) {
        trial.push(one.get());
        if (!units.try_acquire_for(2s))
            return 0;
    }
    return static_cast<int>(pictures / std::chrono::duration<double>(clock::now() - began).count());
}

} // namespace

findings plug_ins()
{
    std::map<std::string, std::string> missing; // by package
    for (auto const& one : all_needed)
        if (!is_there(one.element))
            missing[one.package] +=
                (missing[one.package].empty() ? "" : ", ") + std::string{one.element} + " for " + one.use;
    findings all;
    for (auto const& [package, what] : missing)
        all.push_back({"plug-ins", state::bad, "missing: " + what, "sudo apt install " + package});
    if (all.empty())
        all.push_back(
            {"plug-ins", state::good, "all " + std::to_string(all_needed.size()) + " elements are there", ""});
    return all;
}

findings encoder(publisher::configuration const& from)
{
    auto const choice = publisher::choose_encoder(from.encoder);
    if (!choice)
        return {{"encoder", state::bad,
                 from.encoder.empty() ? "no H.264 encoder works here" : from.encoder + " does not work here",
                 from.encoder.empty()
                     ? "sudo apt install gstreamer1.0-plugins-bad libopenh264-7"
                     : "take encoder out of [video] in quillo.conf: the best that works is taken then"}};
    int const rate = speed(*choice);
    auto const what = choice->element + (choice->hardware ? " (hardware)" : "") + " encodes " + std::to_string(rate) +
                      " pictures of 1280x720 a second";
    if (rate < slowest)
        return {{"encoder", state::note, what,
                 "this machine is slow or busy: watch the uncompressed mount, or send smaller pictures"}};
    return {{"encoder", state::good, what, ""}};
}

} // namespace quillo::doctor
