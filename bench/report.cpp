#include "bench/report.h"

#include <cstdio>

namespace bench {

namespace {

char const* word(job work)
{
    switch (work) {
    case job::ours:
        return "ours";
    case job::exact:
        return "exact";
    case job::close:
        return "close";
    case job::less:
        return "less";
    }
    return "";
}

} // namespace

std::string counter_name(candidate const& c, char const* what) { return c.name + "|" + word(c.work) + "|" + what; }

bool reporter::ReportContext(Context const& context)
{
    PrintBasicContext(&GetErrorStream(), context);
    return true;
}

void reporter::ReportRuns(std::vector<Run> const& runs)
{
    for (auto const& run : runs) {
        std::printf("%-34s %7.3f ms %6.1f GB/s ", run.run_name.function_name.c_str(),
                    run.counters.at("quillo|ours|ms").value, run.counters.at("GB/s").value);
        for (auto const& [name, value] : run.counters)
            if (name.ends_with("|speed") && !name.starts_with("quillo"))
                std::printf("  %s %.2f", name.substr(0, name.find('|')).c_str(), value.value);
        std::printf("\n");
        std::fflush(stdout);
    }
}

} // namespace bench
