#include "publisher/page/page_server.h"

#include "publisher/log.h"
#include "publisher/machine.h"
#include "publisher/page/assets.h"
#include "publisher/page/metrics.h"

#include <cmath>

namespace quillo::publisher {

namespace {

constexpr char const* socket_path = "/talk"; // no file begins like that
constexpr std::chrono::milliseconds status_interval{1000};
constexpr std::chrono::milliseconds changes_interval{100};
constexpr std::chrono::milliseconds levels_interval{50};
constexpr std::string_view live_prefix = "/live/";

// Nothing from elsewhere, nothing inline.
constexpr char const* policy = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
                               "media-src 'self' blob:; connect-src 'self' ws: wss:; base-uri 'none'; "
                               "form-action 'none'; frame-ancestors 'none'";

std::string shown_url(http_settings const& settings, int port)
{
    bool const everywhere = settings.address == "::" || settings.address == "0.0.0.0";
    std::string const host = everywhere ? machine_address() : settings.address;
    std::string const name = host.find(':') == std::string::npos ? host : "[" + host + "]";
    return (settings.certificate ? "https://" : "http://") + name + ":" + std::to_string(port) + "/";
}

} // namespace

page_server::page_server(http_settings const& settings, publisher& shown) : shown_(shown)
{
    loop_.call([&] {
        http_ = std::make_unique<http_server>(
            loop_.context(), settings,
            http_server::handlers{
                [this](SoupServerMessage* request, std::string const& path) { get(request, path); },
                [this](SoupServerMessage* request, SoupWebsocketConnection* socket) { welcome(request, socket); },
                socket_path});
        port_ = http_->port();
        status_timer_ = {loop_.context(), status_interval, [this] { tell_status(); }};
        changes_timer_ = {loop_.context(), changes_interval, [this] { tell_changes(); }};
        levels_timer_ = {loop_.context(), levels_interval, [this] { tell_levels(); }};
    });
    url_ = shown_url(settings, port_);
    shown_.add_url("page", url_);
}

page_server::~page_server()
{
    loop_.call([this] {
        for (auto* const timer : {&status_timer_, &changes_timer_, &levels_timer_})
            *timer = {};
        visitors_.clear();
        pictures_.clear();
        http_.reset();
    });
}

void page_server::get(SoupServerMessage* request, std::string const& path)
{
    if (auto const* const file = find_asset(path)) {
        auto* const headers = soup_server_message_get_response_headers(request);
        soup_message_headers_replace(headers, "Content-Security-Policy", policy);
        answer(request, SOUP_STATUS_OK, file->type, file->content);
    } else if (path == "/status.json") {
        answer(request, SOUP_STATUS_OK, "application/json", shown_.status());
    } else if (path == "/metrics") {
        answer(request, SOUP_STATUS_OK, metrics_type, metrics_text(nlohmann::json::parse(shown_.status())));
    } else if (path == "/healthz") {
        answer(request, SOUP_STATUS_OK, "text/plain", "ok\n");
    } else if (path.starts_with(live_prefix)) {
        get_picture(request, std::string_view{path}.substr(live_prefix.size()));
    } else {
        answer(request, SOUP_STATUS_NOT_FOUND, "text/plain", "nothing here\n");
    }
}

void page_server::get_picture(SoupServerMessage* request, std::string_view name)
{
    std::size_t const dot = name.rfind('.');
    std::string_view const ending = dot == std::string_view::npos ? "" : name.substr(dot);
    bool const live = ending == ".mjpeg";
    auto const what = live || ending == ".jpg" ? shown_.find(std::string{name.substr(0, dot)}) : std::nullopt;
    if (!what) {
        answer(request, SOUP_STATUS_NOT_FOUND, "text/plain", "no such source\n");
        return;
    }
    if (std::string_view{"HEAD"} == soup_server_message_get_method(request)) {
        answer(request, SOUP_STATUS_OK, live ? "multipart/x-mixed-replace" : "image/jpeg", "");
        return;
    }
    auto const who = shown_.everybody()->admit(what->from->path(), live ? "mjpeg" : "still", max_pictures);
    if (!who) {
        answer(request, SOUP_STATUS_SERVICE_UNAVAILABLE, "text/plain", "too many look already\n");
        return;
    }
    who->identify(remote_address(request), header(request, "User-Agent"));
    who->set_transport("HTTP");
    auto made = std::make_unique<jpeg_answer>(
        *http_, request, live ? jpeg_answer::kind::live : jpeg_answer::kind::still, feed_of(what->from),
        shown_.everybody(), who, [this](jpeg_answer* gone) { pictures_.erase(gone); });
    auto* const key = made.get();
    pictures_.emplace(key, std::move(made));
}

std::shared_ptr<jpeg_feed> page_server::feed_of(std::shared_ptr<source> const& from)
{
    std::erase_if(feeds_, [](auto const& entry) { return entry.second.expired(); });
    auto& known = feeds_[from.get()];
    auto feed = known.lock();
    if (!feed)
        known = feed = std::make_shared<jpeg_feed>(loop_, from);
    return feed;
}

void page_server::welcome(SoupServerMessage* request, SoupWebsocketConnection* socket)
{
    auto made = std::make_unique<visitor>(
        visitor::surroundings{loop_, shown_, [this](std::shared_ptr<source> const& from) { return levels_of(from); }},
        request, socket, [this](visitor* gone) { visitors_.erase(gone); });
    made->tell_status(nlohmann::json::parse(shown_.status()));
    auto* const key = made.get();
    visitors_.emplace(key, std::move(made));
}

std::shared_ptr<sound_levels> page_server::levels_of(std::shared_ptr<source> const& from)
{
    std::erase_if(levels_, [](auto const& entry) { return entry.second.expired(); });
    auto& known = levels_[from.get()];
    auto levels = known.lock();
    if (!levels)
        known = levels = std::make_shared<sound_levels>(from);
    return levels;
}

void page_server::tell_status()
{
    std::erase_if(visitors_, [](auto const& entry) {
        bool const silent = entry.second->is_silent();
        if (silent)
            log::info("page: ", entry.second->address(), " does not answer and is given up");
        return silent;
    });
    changes_told_ = shown_.changes();
    if (visitors_.empty())
        return;
    auto const status = nlohmann::json::parse(shown_.status());
    for (auto const& [key, one] : visitors_)
        one->tell_status(status);
}

void page_server::tell_changes()
{
    if (shown_.changes() == changes_told_)
        return;
    for (auto const& [key, one] : visitors_)
        one->find_levels();
    tell_status();
}

void page_server::tell_levels()
{
    nlohmann::json all = nlohmann::json::object();
    for (auto const& [key, one] : visitors_)
        for (auto const& path : one->wanted_levels()) {
            auto const what = all.contains(path) ? std::nullopt : shown_.find(path);
            if (!what)
                continue;
            auto const known = levels_.find(what->from.get());
            auto const levels = known == levels_.end() ? nullptr : known->second.lock();
            if (!levels)
                continue;
            auto const taken = levels->take();
            if (taken.empty())
                continue;
            auto& channels = all[path] = nlohmann::json::array();
            for (auto const& of : taken)
                channels.push_back({std::round(of.peak_db * 10) / 10, std::round(of.average_db * 10) / 10});
        }
    if (!all.empty())
        for (auto const& [key, one] : visitors_)
            one->tell_levels(all);
}

} // namespace quillo::publisher
