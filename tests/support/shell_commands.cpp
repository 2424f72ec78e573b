#include "tests/support/shell_commands.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace quillo::test {

namespace fs = std::filesystem;

shell_commands::shell_commands()
{
    std::string name = (fs::temp_directory_path() / "quillo-commands-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    folder = name;
    std::ofstream(folder / "open") << "#!/bin/sh\nprintf 'open %s\\n' \"$*\" >>'" << (folder / "log").string() << "'\n";
    fs::permissions(folder / "open", fs::perms::owner_all);
    char const* const path = std::getenv("PATH");
    old_path = path ? path : "";
    setenv("PATH", (folder.string() + ":" + old_path).c_str(), 1);
}

shell_commands::~shell_commands()
{
    setenv("PATH", old_path.c_str(), 1);
    fs::remove_all(folder);
}

std::vector<std::string> shell_commands::take()
{
    std::vector<std::string> commands;
    std::ifstream log(folder / "log");
    for (std::string line; std::getline(log, line);)
        commands.push_back(line);
    fs::remove(folder / "log");
    return commands;
}

} // namespace quillo::test
