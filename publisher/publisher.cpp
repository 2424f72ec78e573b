#include "publisher/publisher.h"

#include "publisher/log.h"
#include "publisher/machine.h"
#include "publisher/mounts/bgra_form.h"
#include "publisher/mounts/key_form.h"
#include "publisher/mounts/raw_mount.h"
#include "publisher/slug.h"
#include "publisher/status.h"

#include <algorithm>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_remembered = 256;

struct uncompressed
{
    char const* name;
    raw_mount::form_maker make;
};
constexpr uncompressed raw_mounts[] = {{"raw", make_plain_form}, {"raw+key", make_key_form}, {"bgra", make_bgra_form}};

std::optional<encoder_choice> encoder_for_all(std::string const& only)
{
    auto choice = choose_encoder(only);
    if (!choice)
        log::error(
            "no H.264 encoder works here: only /raw is served; install gstreamer1.0-plugins-bad and libopenh264");
    else if (!have_opus())
        log::error("no Opus encoder here: only /raw is served; install gstreamer1.0-plugins-base");
    else {
        log::info("encoder: ", choice->element);
        return choice;
    }
    return std::nullopt;
}

std::string joined(std::vector<std::string> const& mounts)
{
    std::string all;
    for (auto const& one : mounts)
        all += (all.empty() ? "" : ",") + (one.empty() ? "/" : one);
    return all;
}

std::string shown_address(std::string const& listening)
{
    bool const any = listening == "::" || listening == "0.0.0.0";
    std::string const address = any ? machine_address() : listening;
    return address.find(':') == std::string::npos ? address : "[" + address + "]";
}

} // namespace

publisher::publisher(publisher_settings const& settings)
    : receivers_(std::make_shared<receivers>(settings.limits)), encoder_(encoder_for_all(settings.encoder)),
      encrypted_(settings.rtsp.locks.certificate != nullptr), password_(!settings.rtsp.locks.user.empty()),
      server_(settings.rtsp, receivers_), address_(shown_address(settings.rtsp.address))
{
    // What only this machine can reach is not called out.
    if (settings.announce && !is_loopback(settings.rtsp.address))
        announcer_ = std::make_unique<discovery::announcer>([](std::string const& line) { log::warning(line); });
}

void publisher::change(door_settings const& doors, rtsp_locks const& locks, viewer_limits const& limits)
{
    receivers_->set_limits(limits);
    server_.change(doors, locks);
    password_ = !locks.user.empty();
}

std::string publisher::free_path(introduction const& who)
{
    // The sender that had a path before gets it again, so that saved addresses stay good.
    for (auto const& [path, owner] : paths_)
        if (owner == who.id)
            return path;
    std::string const base = slug(who.name);
    for (int number = 1;; ++number) {
        std::string const path = number == 1 ? base : base + "-" + std::to_string(number);
        auto const taken = paths_.find(path);
        bool const live =
            std::any_of(sources_.begin(), sources_.end(), [&](auto const& s) { return s->path() == path; });
        if (live)
            continue;
        // A sender that is gone keeps its path only against those that would rather have another one anyway.
        if (taken != paths_.end())
            paths_.erase(taken);
        if (paths_.size() >= max_remembered)
            paths_.clear();
        paths_[path] = who.id;
        return path;
    }
}

std::shared_ptr<source> publisher::open_source(introduction const& who, std::function<void()> wake)
{
    std::lock_guard const lock{mutex_};
    auto const same =
        std::find_if(sources_.begin(), sources_.end(), [&](auto const& s) { return s->who().id == who.id; });
    if (same != sources_.end()) {
        auto const old = *same;
        sources_.erase(same);
        withdraw(*old);
        old->close();
    }
    if (sources_.size() >= max_sources)
        return nullptr;

    auto const made = std::make_shared<source>(who, free_path(who), std::move(wake));
    sources_.push_back(made);
    ++changes_;
    std::string const path = "/" + made->path();
    if (encoder_)
        server_.serve(path, encoded_[made.get()] = std::make_shared<encoded_mount>(made, receivers_, *encoder_));
    for (auto const& [name, make] : raw_mounts)
        server_.serve(path + "/" + name, std::make_shared<raw_mount>(made, receivers_, name, make));
    log::info("source \"", who.name, "\" of process ", who.pid, " is at ", url(made->path()));
    announce(made);
    return made;
}

void publisher::close_source(std::shared_ptr<source> const& gone)
{
    std::lock_guard const lock{mutex_};
    if (std::erase(sources_, gone) == 0)
        return;
    ++changes_;
    withdraw(*gone);
    gone->close();
    log::info("source \"", gone->who().name, "\" at ", url(gone->path()), " is gone");
}

void publisher::announce(std::shared_ptr<source> const& made)
{
    if (!announcer_)
        return;
    auto const& who = made->who();
    discovery::service service{discovery::instance_name(machine_name(), who.name),
                               static_cast<std::uint16_t>(port()),
                               {{"path", "/" + made->path()},
                                {"name", who.name},
                                {"id", text(who.id)},
                                {"version", QUILLO_VERSION},
                                {"mounts", joined(mounts())}}};
    // What a receiver has to bring; never what opens the door.
    if (password_)
        service.txt["auth"] = "digest";
    if (encrypted_)
        service.txt["tls"] = "1";
    names_[made.get()] = announcer_->announce(service, [made](std::string const& name) {
        log::info("\"", made->who().name, "\" is called \"", name, "\" on the network");
        made->set_network_name(name);
    });
}

void publisher::withdraw(source const& gone)
{
    server_.withdraw("/" + gone.path());
    for (auto const& one : raw_mounts)
        server_.withdraw("/" + gone.path() + "/" + one.name);
    encoded_.erase(&gone);
    if (auto const name = names_.extract(&gone))
        announcer_->withdraw(name.mapped());
}

std::vector<std::string> publisher::mounts() const
{
    std::vector<std::string> all;
    if (encoder_)
        all.emplace_back();
    for (auto const& one : raw_mounts)
        all.push_back("/" + std::string{one.name});
    return all;
}

std::size_t publisher::sources() const
{
    std::lock_guard const lock{mutex_};
    return sources_.size();
}

std::string publisher::base_url() const
{
    return (encrypted_ ? "rtsps://" : "rtsp://") + address_ + ":" + std::to_string(port());
}

std::string publisher::url(std::string const& path) const { return base_url() + "/" + path; }

std::string publisher::status() const
{
    std::lock_guard const lock{mutex_};
    std::vector<source_report> reports;
    for (auto const& one : sources_) {
        auto const encoded = encoded_.find(one.get());
        reports.push_back({one.get(), encoded == encoded_.end() ? 0 : encoded->second->dropped()});
    }
    auto urls = urls_;
    urls["rtsp"] = base_url();
    return status_json(reports, *receivers_, urls, mounts(), server_.turned_away());
}

std::optional<served_source> publisher::find(std::string const& path) const
{
    std::lock_guard const lock{mutex_};
    for (auto const& one : sources_)
        if (one->path() == path) {
            auto const encoded = encoded_.find(one.get());
            return served_source{one, encoded == encoded_.end() ? nullptr : encoded->second};
        }
    return std::nullopt;
}

void publisher::add_url(std::string const& kind, std::string const& url)
{
    std::lock_guard const lock{mutex_};
    urls_[kind] = url;
}

} // namespace quillo::publisher
