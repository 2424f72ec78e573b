#include "publisher/publisher.h"

#include "publisher/log.h"
#include "publisher/mounts/encoded_mount.h"
#include "publisher/mounts/raw_mount.h"
#include "publisher/slug.h"
#include "publisher/status.h"

#include <unistd.h>

#include <algorithm>
#include <climits>

namespace quillo::publisher {

namespace {

constexpr std::size_t max_remembered = 256;

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

} // namespace

std::string machine_name()
{
    char name[HOST_NAME_MAX + 1] = {};
    ::gethostname(name, HOST_NAME_MAX);
    return name;
}

publisher::publisher(publisher_settings const& settings)
    : encoder_(encoder_for_all(settings.encoder)), server_(settings.rtsp, receivers_)
{
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
    if (sources_.size() >= max_sources)
        return nullptr;
    auto const same =
        std::find_if(sources_.begin(), sources_.end(), [&](auto const& s) { return s->who().id == who.id; });
    if (same != sources_.end())
        return nullptr;

    auto const made = std::make_shared<source>(who, free_path(who), std::move(wake));
    sources_.push_back(made);
    std::string const path = "/" + made->path();
    if (encoder_)
        server_.serve(path, std::make_shared<encoded_mount>(made, receivers_, *encoder_));
    server_.serve(path + "/raw", std::make_shared<raw_mount>(made, receivers_));
    log::info("source \"", who.name, "\" of process ", who.pid, " is at ", url(made->path()));
    return made;
}

void publisher::close_source(std::shared_ptr<source> const& gone)
{
    {
        std::lock_guard const lock{mutex_};
        std::erase(sources_, gone);
    }
    server_.withdraw("/" + gone->path());
    server_.withdraw("/" + gone->path() + "/raw");
    gone->close();
    log::info("source \"", gone->who().name, "\" at ", url(gone->path()), " is gone");
}

std::size_t publisher::sources() const
{
    std::lock_guard const lock{mutex_};
    return sources_.size();
}

std::string publisher::url(std::string const& path) const
{
    return "rtsp://" + machine_name() + ":" + std::to_string(port()) + "/" + path;
}

std::string publisher::status() const
{
    std::lock_guard const lock{mutex_};
    return status_json(sources_, receivers_->all(), "rtsp://" + machine_name() + ":" + std::to_string(port()));
}

} // namespace quillo::publisher
