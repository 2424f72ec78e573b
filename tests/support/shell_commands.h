// Catches what the process has the shell run: a command "open" that writes down its arguments comes first on the path.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillo::test {

class shell_commands
{
  public:
    shell_commands();
    ~shell_commands();
    shell_commands(shell_commands const&) = delete;
    shell_commands& operator=(shell_commands const&) = delete;

    std::vector<std::string> take();

  private:
    std::filesystem::path folder;
    std::string old_path;
};

} // namespace quillo::test
