// A host with the test module loaded, and clips for it.
#pragma once

#include "tests/tools/stand_in_host/test_module.h"
#include "tools/stand_in_host/module.h"
#include "tools/stand_in_host/pattern/pattern.h"
#include "tools/stand_in_host/player.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace quillo::stand_in {

// Loaded fresh for every test.
class TestHost : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        // A handle of our own keeps the record readable after the host has unloaded the module.
        library = dlopen(QUILLO_TEST_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        auto const get = reinterpret_cast<test_module* (*)()>(dlsym(library, "quillo_test_module"));
        ASSERT_NE(get, nullptr);
        told = get();
        told->behaviour = {};
        std::lock_guard const lock(told->record.mutex);
        told->record.calls.clear();
        told->record.clocks.clear();
        told->record.instances.clear();
        told->record.audio_errors.clear();
        told->record.overlaps = 0;
        told->record.entered = false;
    }

    void TearDown() override
    {
        told->behaviour = {};
        dlclose(library);
    }

    // Plays a clip from the module's loading to its unloading.
    outcome play(source& clip, player_settings const& settings, std::function<void(player&)> const& while_playing = {})
    {
        module const loaded(QUILLO_TEST_MODULE);
        auto const plug_ins = start_transmitters(loaded, state);
        name = plug_ins.front()->display_name();
        player transport(*plug_ins.front(), state, clip, settings, figures);
        if (while_playing)
            while_playing(transport);
        return transport.run();
    }

    bool has_breach(std::string const& what) const { return state.log.breaches().count(what) != 0; }

    void* library = nullptr;
    test_module* told = nullptr;
    host_state state{0x5050726F, 0};
    statistics figures;
    std::string name;
};

inline pattern_settings small_pattern(frame_rate rate = {25, 1})
{
    pattern_settings settings;
    settings.width = 64;
    settings.height = 36;
    settings.rate = rate;
    return settings;
}

} // namespace quillo::stand_in
