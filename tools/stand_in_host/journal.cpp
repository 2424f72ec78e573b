#include "tools/stand_in_host/journal.h"

namespace quillo::stand_in {

void journal::breach(std::string const& what)
{
    std::lock_guard const lock(mutex);
    ++broken[what];
}

void journal::acquired(suite_event const& suite)
{
    std::lock_guard const lock(mutex);
    acquire_order.push_back(suite);
}

void journal::released(suite_event const& suite)
{
    std::lock_guard const lock(mutex);
    release_order.push_back(suite);
}

std::map<std::string, long> journal::breaches() const
{
    std::lock_guard const lock(mutex);
    return broken;
}

std::vector<suite_event> journal::acquisitions() const
{
    std::lock_guard const lock(mutex);
    return acquire_order;
}

std::vector<suite_event> journal::releases() const
{
    std::lock_guard const lock(mutex);
    return release_order;
}

} // namespace quillo::stand_in
