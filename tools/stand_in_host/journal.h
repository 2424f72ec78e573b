// What the module did: the suites it asked for, and every breach of the rules between host and module.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace quillo::stand_in {

struct suite_event
{
    std::string name;
    int version;

    friend bool operator==(suite_event const&, suite_event const&) = default;
};

// All functions may be called by any thread.
class journal
{
  public:
    void breach(std::string const& what);
    void acquired(suite_event const& suite);
    void released(suite_event const& suite);

    // In words, with how often each happened.
    std::map<std::string, long> breaches() const;
    std::vector<suite_event> acquisitions() const;
    std::vector<suite_event> releases() const;

  private:
    mutable std::mutex mutex;
    std::map<std::string, long> broken;
    std::vector<suite_event> acquire_order;
    std::vector<suite_event> release_order;
};

} // namespace quillo::stand_in
