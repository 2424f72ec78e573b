#include "tools/stand_in_host/statistics.h"

#include <nlohmann/json.hpp>

namespace quillo::stand_in {

namespace {

using nlohmann::json;

json suites_json(std::vector<suite_event> const& events)
{
    json list = json::array();
    for (suite_event const& e : events)
        list.push_back({{"name", e.name}, {"version", e.version}});
    return list;
}

json clip_json(clip_facts const& clip)
{
    json audio = nullptr;
    if (clip.audio_rate != 0)
        audio = {{"rate", clip.audio_rate}, {"channels", clip.audio_channels}};
    return {{"title", clip.title},
            {"width", clip.video.width},
            {"height", clip.video.height},
            {"rate", {clip.video.rate.n, clip.video.rate.d}},
            {"pixel_aspect", {clip.video.pixel_aspect_n, clip.video.pixel_aspect_d}},
            {"fields", name_of(clip.video.fields)},
            {"format", name_of(clip.format)},
            {"audio", audio}};
}

} // namespace

char const* name_of(pixel_layout layout) { return layout == pixel_layout::vuya ? "vuya" : "bgra"; }

char const* name_of(field_order fields)
{
    switch (fields) {
    case field_order::upper_first:
        return "upper first";
    case field_order::lower_first:
        return "lower first";
    default:
        return "progressive";
    }
}

json to_json(statistics const& figures, frame_counts const& frames, journal const& log)
{
    json clips = json::array();
    for (clip_facts const& clip : figures.clips)
        clips.push_back(clip_json(clip));
    json breaches = json::array();
    for (auto const& [what, count] : log.breaches())
        breaches.push_back({{"what", what}, {"count", count}});
    return {
        {"clips", clips},
        {"frames",
         {{"pushed", figures.pushed},
          {"late", figures.late},
          {"dropped", figures.dropped},
          {"stills", figures.stills},
          {"issued", frames.issued},
          {"disposed", frames.disposed},
          {"outstanding", frames.outstanding()}}},
        {"push_ms",
         {{"p50", figures.push_time.quantile_ms(0.5)},
          {"p99", figures.push_time.quantile_ms(0.99)},
          {"max", figures.push_time.max_ms()}}},
        {"clock",
         {{"starts", figures.starts},
          {"callbacks", figures.clock.callbacks},
          {"elapsed_s", figures.clock.elapsed_s},
          {"steady_s", figures.clock.steady_s},
          {"drift_ms", figures.clock.drift_ms()},
          {"drift_ppm", figures.clock.drift_ppm()},
          {"jitter_ms",
           {{"p50", figures.jitter_p50_ms}, {"p99", figures.jitter_p99_ms}, {"max", figures.jitter_max_ms}}}}},
        {"audio",
         {{"blocks", figures.audio.blocks},
          {"underruns", figures.audio.underruns},
          {"refused", figures.audio.refused}}},
        {"suites", {{"acquired", suites_json(log.acquisitions())}, {"released", suites_json(log.releases())}}},
        {"breaches", breaches},
    };
}

} // namespace quillo::stand_in
