// A line a benchmark: our time, then how many times faster we are than each limit and peer.
#pragma once

#include "bench/row.h"

#include <benchmark/benchmark.h>

namespace bench {

// Counters carry what a table needs: "libyuv ARGBCopy|less|ms" and "...|speed".
std::string counter_name(candidate const& c, char const* what);

class reporter : public benchmark::BenchmarkReporter
{
  public:
    bool ReportContext(Context const& context) override;
    void ReportRuns(std::vector<Run> const& runs) override;
};

} // namespace bench
