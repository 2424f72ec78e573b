// An SDK_File read with nothing but its published offsets: the second opinion on what the writing functions make.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace plain {

struct file
{
    std::vector<char> bytes;

    explicit file(std::string const& path)
    {
        std::ifstream in(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }

    template <class T>
    T at(std::size_t offset) const
    {
        T value{};
        if (offset + sizeof value <= bytes.size())
            std::memcpy(&value, &bytes[offset], sizeof value);
        return value;
    }

    std::int32_t int32(std::size_t offset) const { return at<std::int32_t>(offset); }
    std::int64_t int64(std::size_t offset) const { return at<std::int64_t>(offset); }

    std::string text(std::size_t offset, std::size_t size) const
    {
        return offset + size <= bytes.size() ? std::string(&bytes[offset], size) : std::string("(beyond the end)");
    }
};

} // namespace plain
