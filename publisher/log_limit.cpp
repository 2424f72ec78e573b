#include "publisher/log_limit.h"

namespace quillo::log {

bool limit::allows(place from, level of_line, std::string const& text, steady::time_point now)
{
    auto& here = places_.try_emplace(from, count{.since = now}).first->second;
    if (now - here.since >= window && here.left_out == 0) {
        here.since = now;
        here.written = 0;
    }
    if (here.written < lines) {
        ++here.written;
        return true;
    }
    ++here.left_out;
    here.of_lines = of_line;
    here.last = text;
    return false;
}

std::vector<limit::silenced> limit::take_silenced(steady::time_point now, bool all)
{
    std::vector<silenced> over;
    for (auto& [from, here] : places_)
        if (here.left_out > 0 && (all || now - here.since >= window)) {
            over.push_back({here.of_lines, here.left_out, std::move(here.last)});
            here = count{.since = now};
        }
    return over;
}

} // namespace quillo::log
