// The floor under every conversion: loops that read and write as many bytes and do nothing with them.
#pragma once

#include <cstddef>

namespace bench {

void copy_memory(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out);      // memcpy
void ordinary_stores(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out);  // read ahead
void streaming_stores(unsigned char const* from, std::size_t in, unsigned char* to, std::size_t out); // read ahead

} // namespace bench
