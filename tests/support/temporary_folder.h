// A folder of a test's own, gone with the object.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace quillo::testing {

class temporary_folder
{
  public:
    temporary_folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "quillo-test-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::runtime_error{"no temporary folder"};
        path_ = name;
    }
    temporary_folder(temporary_folder const&) = delete;
    temporary_folder& operator=(temporary_folder const&) = delete;
    ~temporary_folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string const& path() const { return path_; }

  private:
    std::string path_;
};

} // namespace quillo::testing
