// Says what was being tried when the process dies of a bad access or an unknown instruction.
#pragma once

#include <functional>
#include <string>

namespace quillo::conversions {

class crash_report
{
  public:
    // While this lives, a crash prints what the function tells.
    explicit crash_report(std::function<std::string()> tell);
    ~crash_report();
    crash_report(crash_report const&) = delete;
    crash_report& operator=(crash_report const&) = delete;

  private:
    std::function<std::string()> tell_;
    crash_report const* outer_;

    static void print(int signal);
};

} // namespace quillo::conversions
