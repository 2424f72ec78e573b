// Anything at all as a configuration file.
#include "publisher/config/configuration.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text{reinterpret_cast<char const*>(data), size};
    std::vector<quillo::publisher::file_problem> problems;
    auto const read = quillo::publisher::configuration_from(text, "/folder", problems);
    auto const lines = std::count(text.begin(), text.end(), '\n') + 1;
    for (auto const& one : problems)
        if (one.line < 1 || one.line > lines || one.text.empty())
            std::abort();
    bool const sane = read.port >= 0 && read.port <= 65535 && read.request_size >= 1024 && read.connections >= 1 &&
                      read.request_time.count() >= 1 && !read.address.empty();
    bool const half_a_lock = problems.empty() && (read.user.empty() != read.password.empty() ||
                                                  read.certificate.empty() != read.key.empty());
    if (!sane || half_a_lock)
        std::abort();
    return 0;
}
