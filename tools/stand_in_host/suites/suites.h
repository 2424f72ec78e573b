// The host's suites: tables of plain functions that work on the current host_state.
#pragma once

#include "host/adapter.h"

namespace quillo::stand_in {

// The record that every call to a module carries, with the way to all other suites.
piSuites* legacy_suites();

SPBasicSuite* sp_basic_suite();

// Tables as AcquireSuite hands them out.
void const* app_info_suite();
void const* playmod_audio_suite();
void const* ppix_suite();
void const* time_suite();
PlugMemoryFuncs* memory_functions();

} // namespace quillo::stand_in
