#include "tools/stand_in_host/host_application.h"

namespace quillo::stand_in {

std::span<host_application const> host_applications()
{
    static constexpr host_application all[] = {
        {"premiere", "Adobe Premiere Pro", 0x5050726F},
        {"elements", "Adobe Premiere Elements", 0x5072456C},
        {"aftereffects", "Adobe After Effects", 0x46585443},
        {"mediaencoder", "Adobe Media Encoder", 0x414D4520},
        {"cottonwood", "Adobe Cottonwood", 0x434F574F},
        {"prelude", "Adobe Prelude", 0x50524C44},
        {"speedgrade", "Adobe SpeedGrade", 0x53504744},
        {"audition", "Adobe Audition", 0x41644175},
        {"characteranimator", "Adobe Character Animator", 0x416E6D6C},
    };
    return all;
}

std::optional<host_application> find_host_application(std::string_view key)
{
    for (host_application const& app : host_applications())
        if (app.key == key)
            return app;
    return std::nullopt;
}

} // namespace quillo::stand_in
