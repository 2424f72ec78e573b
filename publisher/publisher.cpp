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

using namespace std::chrono_literals;

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
      slate_(settings.slate), server_(settings.rtsp, receivers_), address_(shown_address(settings.rtsp.address))
{
    // What only this machine can reach is not called out.
    if (settings.announce && !is_loopback(settings.rtsp.address))
        announcer_ = std::make_unique<discovery::announcer>([](std::string const& line) { log::warning(line); });
}

void publisher::change(door_settings const& doors, rtsp_locks const& locks, viewer_limits const& limits,
                       std::chrono::seconds slate)
{
    slate_ = slate;
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
        bool const live = std::any_of(sources_.begin(), sources_.end(),
                                      [&](auto const& s) { return s->path() == path && !s->is_away(); });
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

std::optional<held_source> publisher::open_source(introduction const& who, std::function<void()> wake)
{
    std::lock_guard const lock{mutex_};
    auto const find = [this](auto const& fits) {
        auto const found = std::find_if(sources_.begin(), sources_.end(), fits);
        return found == sources_.end() ? nullptr : *found;
    };
    // The sender's last connection has broken, and nobody has noticed yet.
    if (auto const same = find([&](auto const& s) { return s->who().id == who.id && !s->is_away(); }))
        time_away() > 0s ? leave(*same) : close(same);
    auto const place = free_path(who);
    if (auto const waiting = find([&](auto const& s) { return s->path() == place; })) {
        resume(waiting, who, std::move(wake));
        return held_source{waiting, waiting->senders()};
    }
    if (sources_.size() >= max_sources) {
        auto const waiting = find([](auto const& s) { return s->is_away(); });
        if (!waiting)
            return std::nullopt;
        close(waiting);
    }

    auto const made = std::make_shared<source>(who, place, std::move(wake));
    sources_.push_back(made);
    ++changes_;
    if (encoder_)
        server_.serve("/" + place, encoded_[made.get()] = std::make_shared<encoded_mount>(made, receivers_, *encoder_));
    serve_uncompressed(made);
    log::info("source \"", who.name, "\" of process ", who.pid, " is at ", url(place));
    announce(made);
    return held_source{made, made->senders()};
}

void publisher::resume(std::shared_ptr<source> const& waiting, introduction const& who, std::function<void()> wake)
{
    auto const before = waiting->who();
    waiting->come_back(who, std::move(wake));
    ++changes_;
    serve_uncompressed(waiting);
    log::info("source \"", who.name, "\" of process ", who.pid, " is back at ", url(waiting->path()));
    if (before.id == who.id && before.name == who.name)
        return;
    unannounce(*waiting);
    announce(waiting);
}

std::chrono::seconds publisher::leave_source(held_source const& left)
{
    std::lock_guard const lock{mutex_};
    if (left.is_over() || !has(left.of) || time_away() == 0s)
        return 0s;
    leave(*left.of);
    return time_away();
}

bool publisher::waits(held_source const& left) const
{
    std::lock_guard const lock{mutex_};
    return !left.is_over() && has(left.of);
}

bool publisher::has(std::shared_ptr<source> const& one) const
{
    return std::find(sources_.begin(), sources_.end(), one) != sources_.end();
}

// Where nothing is encoded nobody could see a slate.
std::chrono::seconds publisher::time_away() const { return encoder_ ? slate_.load() : 0s; }

// Uncompressed viewers are not kept: what they show may be keyed over somebody's programme.
void publisher::leave(source& left)
{
    ++changes_;
    withdraw_uncompressed(left);
    left.go_away();
    log::info("source \"", left.who().name, "\" at ", url(left.path()), " is away");
}

void publisher::close_source(held_source const& gone)
{
    std::lock_guard const lock{mutex_};
    if (!gone.is_over())
        close(gone.of);
}

void publisher::close(std::shared_ptr<source> const& gone)
{
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
    auto const who = made->who();
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

void publisher::unannounce(source const& gone)
{
    if (auto const name = names_.extract(&gone))
        announcer_->withdraw(name.mapped());
}

void publisher::withdraw(source const& gone)
{
    server_.withdraw("/" + gone.path());
    withdraw_uncompressed(gone);
    encoded_.erase(&gone);
    unannounce(gone);
}

void publisher::serve_uncompressed(std::shared_ptr<source> const& made)
{
    for (auto const& [name, make] : raw_mounts)
        server_.serve("/" + made->path() + "/" + name, std::make_shared<raw_mount>(made, receivers_, name, make));
}

void publisher::withdraw_uncompressed(source const& gone)
{
    for (auto const& one : raw_mounts)
        server_.withdraw("/" + gone.path() + "/" + one.name);
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
        reports.push_back({one.get(), encoded == encoded_.end() ? encoder_losses{} : encoded->second->lost()});
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
