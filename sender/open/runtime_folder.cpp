#include "sender/open/runtime_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace quillo::open {

std::string runtime_folder()
{
    if (char const* const own = std::getenv("QUILLO_RUNTIME_DIR"); own && *own)
        return own;
    if (char const* const session = std::getenv("XDG_RUNTIME_DIR"); session && *session)
        return std::string{session} + "/quillo";
    return "/tmp/quillo-" + std::to_string(::getuid());
}

std::string socket_path(std::string const& folder) { return folder + "/publisher.sock"; }

bool make_private_folder(std::string const& folder, std::string& problem)
{
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        problem = "cannot make " + folder + ": " + std::strerror(errno);
        return false;
    }
    // Not stat: a link in /tmp may have been put there by somebody else.
    struct stat found;
    if (::lstat(folder.c_str(), &found) != 0) {
        problem = "cannot look at " + folder + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISDIR(found.st_mode) || found.st_uid != ::getuid() || (found.st_mode & 077) != 0) {
        problem = folder + " is not a folder that belongs to this user alone (mode 0700)";
        return false;
    }
    return true;
}

} // namespace quillo::open
