#include "tools/stand_in_host/suites/suites.h"

namespace quillo::stand_in {

piSuites* legacy_suites()
{
    static PlugUtilFuncs utilities = [] {
        PlugUtilFuncs table{};
        table.getSPBasicSuite = sp_basic_suite;
        return table;
    }();
    static piSuites record = [] {
        piSuites result{};
        result.piInterfaceVer = PR_PISUITES_VERSION;
        result.memFuncs = memory_functions();
        result.utilFuncs = &utilities;
        return result;
    }();
    return &record;
}

} // namespace quillo::stand_in
