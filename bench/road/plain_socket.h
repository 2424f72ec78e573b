// The peer of the raw address: a socket that carries pictures and nothing else.
#pragma once

#include <cstddef>
#include <vector>

namespace quillo::bench {

// How long pictures of so many bytes take from one process of this machine to another through a TCP connection with
// nothing else to do, each in ms: what the road is measured against. One picture is sent each interval.
std::vector<double> plain_socket_ms(std::size_t picture_bytes, double interval_s, int pictures);

} // namespace quillo::bench
