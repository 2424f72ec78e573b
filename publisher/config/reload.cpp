#include "publisher/config/reload.h"

#include <filesystem>
#include <sstream>
#include <utility>

namespace quillo::publisher {

namespace {

bool exists(std::string const& file)
{
    std::error_code none;
    return std::filesystem::exists(file, none);
}

} // namespace

configuration configuration_source::read() const
{
    configuration result;
    if (!file.empty() || exists(name()))
        result = read_configuration(name());
    if (command_line)
        command_line(result);
    return result;
}

live_configuration::live_configuration(configuration_source from, configuration initial, use apply)
    : from_(std::move(from)), apply_(std::move(apply)), current_(std::move(initial)), was_there_(exists(from_.name())),
      watcher_(from_.name(), [this] { changed(); })
{
}

void live_configuration::changed()
{
    auto const file = from_.name();
    if (!exists(file)) {
        // Not the defaults: a password that is gone for a moment must not open the door.
        if (std::exchange(was_there_, false))
            log::warning(file, " is gone; its settings stay until the publisher is started anew");
        return;
    }
    was_there_ = true;
    configuration wanted;
    try {
        wanted = from_.read();
    } catch (bad_configuration const& error) {
        std::istringstream problems{error.what()};
        for (std::string one; std::getline(problems, one);)
            log::error(one);
        log::error(file, " is not used; the settings so far stay");
        return;
    }
    if (wanted == current_)
        return;
    try {
        apply_(wanted);
    } catch (std::exception const& error) {
        log::error(error.what(), "; the settings so far stay");
        return;
    }
    auto const later = at_next_start(current_, wanted);
    log::notice(file, " is read again", later.empty() ? "" : "; at the next start: ", later);
    current_ = std::move(wanted);
}

std::string at_next_start(configuration const& now, configuration const& wanted)
{
    std::string keys;
    auto const note = [&](bool differs, char const* key) {
        if (differs)
            keys += (keys.empty() ? "" : ", ") + std::string{key};
    };
    note(now.address != wanted.address, "[network] address");
    note(now.port != wanted.port, "[network] port");
    note(now.announce != wanted.announce, "[network] announce");
    note(now.tls != wanted.tls, "[tls] enabled");
    note(now.tls_port != wanted.tls_port, "[tls] port");
    note(now.page != wanted.page || now.page_address != wanted.page_address || now.page_port != wanted.page_port,
         "[page]");
    note(wanted.page && (now.allow != wanted.allow || now.user != wanted.user || now.password != wanted.password),
         "who may see the page");
    note(now.encoder != wanted.encoder, "[video] encoder");
    note(now.nice != wanted.nice, "[process] nice");
    return keys;
}

} // namespace quillo::publisher
