// The plug-in as a host sees it: an entry point and nothing else. A test program links one back end; scenarios are
// written against this interface only and so run on each.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/adapter.h"

namespace quillo::test {

class module_under_test
{
  public:
    virtual ~module_under_test() = default;

    // xTransmitEntry.
    virtual tmEntryFunc entry() const = 0;
    // An exported function by its name on Linux (macOS has one more underscore); null when it is not exported.
    virtual void* exported(std::string const& name) const = 0;
    // What the module had the shell run since the last call of this, one command an element.
    virtual std::vector<std::string> take_commands() = 0;
    // An exception that the module throws or lets through can be caught by the test.
    virtual bool exceptions_cross() const = 0;
};

// Defined by the back end. Throws std::runtime_error with one clear line when there is no module.
std::unique_ptr<module_under_test> load_module_under_test();

} // namespace quillo::test
