// The steady clock that paces playback without audio, in a file of its own so that tests can put theirs in its place.
#pragma once

namespace quillo::steady_time {

long long now_ns();
void sleep_ns(long long duration_ns);

} // namespace quillo::steady_time
