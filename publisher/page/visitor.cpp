#include "publisher/page/visitor.h"

#include "publisher/log.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace quillo::publisher {

namespace {

using nlohmann::json;

bool takes(json const& message, std::string_view codec)
{
    auto const list = message.find("video");
    return list != message.end() && list->is_array() &&
           std::any_of(list->begin(), list->end(), [&](json const& name) { return name == codec; });
}

std::string without_slash(std::string const& path) { return path.starts_with('/') ? path.substr(1) : path; }

} // namespace

visitor::visitor(surroundings around, SoupServerMessage* request, SoupWebsocketConnection* socket,
                 std::function<void(visitor*)> gone)
    : around_(std::move(around)), socket_(retain_object(socket)), address_(remote_address(request)),
      agent_(header(request, "User-Agent")), gone_(std::move(gone))
{
    soup_websocket_connection_set_max_incoming_payload_size(socket, longest_message);
    auto const on_message = +[](SoupWebsocketConnection*, int type, GBytes* bytes, gpointer self) {
        gsize size = 0;
        auto const* const text = static_cast<char const*>(g_bytes_get_data(bytes, &size));
        if (type == SOUP_WEBSOCKET_DATA_TEXT)
            static_cast<visitor*>(self)->take({text, size});
    };
    g_signal_connect(socket, "message", G_CALLBACK(on_message), this);
    auto const on_closed = +[](SoupWebsocketConnection*, gpointer self) {
        auto const ended = static_cast<visitor*>(self)->gone_; // which ends the object
        ended(static_cast<visitor*>(self));
    };
    g_signal_connect(socket, "closed", G_CALLBACK(on_closed), this);
}

visitor::~visitor()
{
    g_signal_handlers_disconnect_by_data(socket_.get(), this);
    if (soup_websocket_connection_get_state(socket_.get()) == SOUP_WEBSOCKET_STATE_OPEN)
        soup_websocket_connection_close(socket_.get(), SOUP_WEBSOCKET_CLOSE_GOING_AWAY, nullptr);
}

void visitor::take(std::string_view text)
{
    json const message = json::parse(text, nullptr, false);
    try {
        if (!message.is_object())
            throw std::runtime_error{"no object"};
        take_message(message);
    } catch (std::exception const& error) {
        log::warning("page: ", address_, " is not understood and ended: ", error.what());
        soup_websocket_connection_close(socket_.get(), SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, nullptr);
    }
}

void visitor::take_message(json const& message)
{
    auto const id_of = [&](char const* word) { return message.at(word).get<int>(); };
    auto const viewer_of = [&](int id) {
        auto const found = viewers_.find(id);
        return found == viewers_.end() ? nullptr : found->second; // it may just have ended
    };
    if (message.contains("seen")) {
        seen_ = std::clamp(id_of("seen"), seen_, count_);
        last_seen_ = steady::now();
    } else if (message.contains("watch")) {
        watch(id_of("watch"), message);
    } else if (message.contains("stop")) {
        viewers_.erase(id_of("stop"));
    } else if (message.contains("answer")) {
        if (auto const viewer = viewer_of(id_of("answer")))
            viewer->answer(message.at("sdp").get<std::string>());
    } else if (message.contains("candidate")) {
        if (auto const viewer = viewer_of(id_of("candidate")))
            viewer->candidate(message.at("mline").get<unsigned>(), message.at("text").get<std::string>());
    } else if (message.contains("levels")) {
        want_levels(message.at("levels"));
    }
}

void visitor::watch(int id, json const& message)
{
    if (viewers_.contains(id))
        throw std::runtime_error{"the same viewer twice"};
    auto const what = around_.shown.find(without_slash(message.at("path").get<std::string>()));
    if (!what || !what->encoded || !takes(message, "H264") || viewers_.size() >= max_viewers)
        return over(id, "not to be had");
    auto const& everybody = around_.shown.everybody();
    auto const who = everybody->admit(what->from->path(), "webrtc", max_rtc);
    if (!who)
        return over(id, "too many look already");
    who->identify(address_, agent_);
    who->set_transport("WebRTC");
    try {
        rtc_talk& talk = *this;
        auto const made = std::make_shared<rtc_viewer>(id, around_.loop, *what, everybody, who, talk);
        viewers_[id] = made;
        made->start();
    } catch (std::runtime_error const& error) {
        log::warning("page: no WebRTC: ", error.what());
        everybody->dismiss(who);
        over(id, "not to be had");
    }
}

void visitor::want_levels(json const& paths)
{
    wanted_levels_.clear();
    for (json const& path : paths)
        if (wanted_levels_.size() < max_viewers)
            wanted_levels_.insert(without_slash(path.get<std::string>()));
    find_levels();
}

void visitor::find_levels()
{
    std::vector<std::shared_ptr<sound_levels>> found;
    for (auto const& path : wanted_levels_)
        if (auto const what = around_.shown.find(path))
            found.push_back(around_.levels_of(what->from));
    levels_ = std::move(found); // now, so that those in both lists go on
}

void visitor::tell_status(json const& status)
{
    if (!send_counted({{"status", status}}, most_unseen))
        return;
    json delays = json::object();
    for (auto const& [id, viewer] : viewers_)
        if (double const ms = viewer->delay_ms(); !std::isnan(ms))
            delays[std::to_string(id)] = std::max(0.0, ms); // a time stamp may be a little ahead of its picture
    if (!delays.empty())
        send({{"delay", delays}});
}

void visitor::tell_levels(json const& levels_by_path)
{
    json mine = json::object();
    for (auto const& path : wanted_levels_)
        if (levels_by_path.contains(path))
            mine["/" + path] = levels_by_path[path];
    if (!mine.empty())
        send_counted({{"levels", mine}}, most_unseen_before_levels);
}

bool visitor::is_silent() const { return seen_ < count_ && steady::now() - last_seen_ > silence_allowed; }

void visitor::offer(int id, std::string const& sdp) { send({{"offer", id}, {"sdp", sdp}}); }

void visitor::candidate(int id, unsigned mline, std::string const& text)
{
    send({{"candidate", id}, {"mline", mline}, {"text", text}});
}

void visitor::over(int id, std::string const& why)
{
    send({{"refused", id}, {"why", why}});
    viewers_.erase(id);
}

void visitor::send(json const& message)
{
    if (soup_websocket_connection_get_state(socket_.get()) == SOUP_WEBSOCKET_STATE_OPEN)
        soup_websocket_connection_send_text(socket_.get(),
                                            message.dump(-1, ' ', false, json::error_handler_t::replace).c_str());
}

bool visitor::send_counted(json message, int most_before)
{
    if (count_ - seen_ >= most_before)
        return false;
    if (seen_ == count_)
        last_seen_ = steady::now();
    message["count"] = ++count_;
    send(message);
    return true;
}

} // namespace quillo::publisher
