#include "tools/stand_in_host/suites/host_state.h"
#include "tools/stand_in_host/suites/suites.h"

namespace quillo::stand_in {

void const* app_info_suite()
{
    static PrSDKAppInfoSuite const table = [] {
        PrSDKAppInfoSuite t{};
        t.GetAppInfo = [](int selector, void* result) {
            if (selector != host::app_code_selector)
                return static_cast<prSuiteError>(suiteError_NotImplemented);
            *static_cast<csSDK_uint32*>(result) = host_state::current().app_code;
            return prSuiteError{suiteError_NoError};
        };
        return t;
    }();
    return &table;
}

} // namespace quillo::stand_in
