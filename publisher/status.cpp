#include "publisher/status.h"

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
            {"frame_format", state.frame_format == 0 ? "interleaved" : "progressive"}};
}

json receiver_json(receiver const& who)
{
    return {{"mount", who.mount()},
            {"address", who.address()},
            {"transport", who.transport()},
            {"agent", who.agent()},
            {"playing", who.playing.load()},
            {"since_s", std::chrono::duration<double>(steady::now() - who.since()).count()},
            {"frames_sent", who.frames_sent.load()},
            {"frames_dropped", who.frames_dropped.load()}};
}

json losses_json(protocol::losses_body const& losses)
{
    return {{"video_sends", losses.video_sends},       {"video_no_slot", losses.video_no_slot},
            {"video_replaced", losses.video_replaced}, {"video_refused", losses.video_refused},
            {"audio_sends", losses.audio_sends},       {"audio_no_room", losses.audio_no_room},
            {"audio_refused", losses.audio_refused},   {"video_late", losses.video_late},
            {"audio_late", losses.audio_late}};
}

json source_json(source const& of, std::vector<receiver_ptr> const& watching, std::string const& base)
{
    auto const state = of.current();
    json receiving = json::array();
    for (auto const& who : watching)
        if (who->path() == of.path())
            receiving.push_back(receiver_json(*who));
    return {{"name", of.who().name},
            {"id", text(of.who().id)},
            {"network_name", state.network_name},
            {"path", "/" + of.path()},
            {"url", base + "/" + of.path()},
            {"pid", of.who().pid},
            {"format", format_json(state)},
            {"audio", {{"rate", state.sound.rate}, {"channels", state.sound.channels}}},
            {"receivers", receiving},
            {"frames_in", state.pictures_in},
            {"blocks_in", state.blocks_in},
            {"anchors", state.anchors},
            {"losses", losses_json(state.losses)}};
}

} // namespace

std::string status_json(std::vector<std::shared_ptr<source>> const& sources, std::vector<receiver_ptr> const& watching,
                        std::string const& base)
{
    json all = json::array();
    for (auto const& one : sources)
        all.push_back(source_json(*one, watching, base));
    json const status = {
        {"version", QUILLO_VERSION}, {"pid", ::getpid()}, {"urls", {{"rtsp", base}}}, {"sources", all}};
    return status.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace quillo::publisher
