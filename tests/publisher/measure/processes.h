// The three ends of a measurement, each a process of its own so that its processor time can be told.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace quillo::measure {

class child
{
  public:
    // Runs a program, or a function of this one.
    explicit child(std::vector<std::string> const& command, std::string const& log_file);
    explicit child(std::function<void()> const& body);
    child(child const&) = delete;
    child& operator=(child const&) = delete;
    ~child(); // SIGTERM, and waits

    pid_t pid() const { return pid_; }
    void signal(int number) const;
    double cpu_seconds() const; // so far
    double resident_mb() const;

  private:
    pid_t pid_;
};

double own_cpu_seconds();

} // namespace quillo::measure
