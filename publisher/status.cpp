#include "publisher/status.h"

#include "publisher/machine.h"
#include "sender/Quillolib_send.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace quillo::publisher {

namespace {

using nlohmann::json;

json format_json(source::state const& state)
{
    if (!state.announced)
        return nullptr;
    return {{"width", state.pictures.width},
            {"height", state.pictures.height},
            {"fourcc", fourcc_text(state.fourcc)},
            {"rate", {state.pictures.rate.n, state.pictures.rate.d}},
            {"aspect", state.aspect},
            {"frame_format", state.frame_format == 0 ? "interleaved" : "progressive"},
            {"color", state.pictures.layout == fill::bgr ? "RGB, full range" : "BT.709, limited range"},
            {"alpha", state.fourcc == SenderFourCC_UYVA || state.fourcc == SenderFourCC_BGRA}};
}

json number_or_null(std::optional<double> value) { return value ? json(*value) : json(nullptr); }

json receiver_json(receiver const& who)
{
    return {{"mount", who.mount()},
            {"address", who.address()},
            {"transport", who.transport()},
            {"agent", who.agent()},
            {"playing", who.playing.load()},
            {"since_s", std::chrono::duration<double>(steady::now() - who.since()).count()},
            {"frames_sent", who.frames_sent.load()},
            {"frames_dropped", who.frames_dropped.load()},
            {"blocks_dropped", who.blocks_dropped.load()}};
}

json losses_json(source::state const& state, encoder_losses const& encoder_late, receivers::totals const& totals)
{
    auto const& losses = state.losses;
    return {{"video_sends", losses.video_sends},
            {"video_no_slot", losses.video_no_slot},
            {"video_replaced", losses.video_replaced},
            {"video_refused", losses.video_refused},
            {"video_late", losses.video_late},
            {"encoder_late", encoder_late.pictures},
            {"receiver_late", totals.frames_dropped},
            {"audio_sends", losses.audio_sends},
            {"audio_no_room", losses.audio_no_room},
            {"audio_refused", losses.audio_refused},
            {"audio_late", losses.audio_late},
            {"audio_displaced", state.blocks_displaced},
            {"encoder_late_sound", encoder_late.packets},
            {"receiver_late_sound", totals.blocks_dropped}};
}

json source_json(source_report const& report, receivers const& watching, std::string const& base)
{
    source const& of = *report.of;
    auto const state = of.current();
    auto const who = of.who();
    auto const totals = watching.totals_of(of.path());
    json receiving = json::array();
    for (auto const& one : watching.all())
        if (one->path() == of.path())
            receiving.push_back(receiver_json(*one));
    return {{"name", who.name},
            {"id", text(who.id)},
            {"away", state.away},
            {"network_name", state.network_name},
            {"path", "/" + of.path()},
            {"url", base + "/" + of.path()},
            {"pid", who.pid},
            {"format", format_json(state)},
            {"audio", {{"rate", state.sound.rate}, {"channels", state.sound.channels}}},
            {"receivers", receiving},
            {"frames_in", state.pictures_in},
            {"blocks_in", state.blocks_in},
            {"anchors", state.anchors},
            {"sound_breaks", state.sound_breaks},
            {"frames_sent", totals.frames_sent},
            {"hand_over_ms", number_or_null(state.offsets.hand_over_ms())},
            {"av_offset_ms", number_or_null(state.offsets.av_ms())},
            {"losses", losses_json(state, report.encoder_late, totals)}};
}

json turned_away_json(door_counts const& counts)
{
    return {{"strangers", counts.strangers},
            {"too_many", counts.too_many},
            {"silent", counts.silent},
            {"oversized", counts.oversized},
            {"wrong_password", counts.wrong_password},
            {"locked_out", counts.locked_out}};
}

} // namespace

std::string status_json(std::vector<source_report> const& sources, receivers const& watching,
                        std::map<std::string, std::string> const& urls, std::vector<std::string> const& mounts,
                        door_counts const& turned_away)
{
    json all = json::array();
    for (auto const& one : sources)
        all.push_back(source_json(one, watching, urls.at("rtsp")));
    json const status = {{"version", QUILLO_VERSION},
                         {"pid", ::getpid()},
                         {"machine", machine_name()},
                         {"urls", urls},
                         {"mounts", mounts},
                         {"sources", all},
                         {"turned_away", turned_away_json(turned_away)}};
    return status.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace quillo::publisher
