#include "tools/stand_in_host/suites/host_state.h"
#include "tools/stand_in_host/suites/suites.h"

#include <cstdlib>
#include <cstring>

namespace quillo::stand_in {

namespace {

constexpr SPErr no_such_suite = 'S' << 24 | '!' << 16 | 'F' << 8 | 'd';
constexpr SPErr no_memory = 'S' << 24 | 'M' << 16 | 'e' << 8 | 'm';

void const* suite_table(char const* name, int version)
{
    struct offer
    {
        char const* name;
        int version;
        void const* (*table)();
    };
    static constexpr offer offers[] = {
        {"Premiere Playmod Audio Suite", 4, playmod_audio_suite},
        {"Premiere PPix Suite", 1, ppix_suite},
        {"Premiere Time Suite", 1, time_suite},
        {"MediaCore App Info Suite", 3, app_info_suite},
    };
    for (offer const& o : offers)
        if (std::strcmp(o.name, name) == 0 && o.version == version)
            return o.table == playmod_audio_suite && !host_state::current().offers_audio ? nullptr : o.table();
    return nullptr;
}

SPErr acquire(char const* name, int version, void const** suite)
{
    *suite = suite_table(name, version);
    host_state::current().log.acquired({name, version});
    return *suite != nullptr ? kSPNoError : no_such_suite;
}

// The tables live as long as the process, so nothing hangs on a count; suites that were never acquired may be released.
SPErr release(char const* name, int version)
{
    host_state::current().log.released({name, version});
    return kSPNoError;
}

SPErr allocate(std::size_t size, void** block)
{
    *block = std::malloc(size);
    return *block != nullptr ? kSPNoError : no_memory;
}

SPErr reallocate(void* block, std::size_t size, void** moved)
{
    *moved = std::realloc(block, size);
    return *moved != nullptr ? kSPNoError : no_memory;
}

} // namespace

SPBasicSuite* sp_basic_suite()
{
    static SPBasicSuite table = [] {
        SPBasicSuite t{};
        t.AcquireSuite = acquire;
        t.ReleaseSuite = release;
        t.IsEqual = [](char const* a, char const* b) { return static_cast<SPBoolean>(std::strcmp(a, b) == 0); };
        t.AllocateBlock = allocate;
        t.FreeBlock = [](void* block) {
            std::free(block);
            return SPErr{kSPNoError};
        };
        t.ReallocateBlock = reallocate;
        t.Undefined = [] { return no_such_suite; };
        return t;
    }();
    return &table;
}

} // namespace quillo::stand_in
