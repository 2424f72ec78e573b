// A transmit module that does as it is told and notes what happens to it. Reached by its exported quillo_test_module.
#pragma once

#include "host/adapter.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

struct test_picture
{
    PrTime time;
    pmPlayMode mode;
    prRect bounds;
    int row_bytes;
    PrPixelFormat format;
    csSDK_uint32 aspect_n;
    csSDK_uint32 aspect_d;
    unsigned char const* pixels; // the first row in memory; valid during the call
};

struct test_behaviour
{
    enum disposals {
        at_once,
        with_next_push, // the last one when video is switched off
        twice,
        never
    };
    disposals disposal = at_once;
    std::vector<PrPixelFormat> formats = {PrPixelFormat_VUYA_4444_8u_709, PrPixelFormat_BGRA_4444_8u};
    std::string throws_in; // the name of a function
    bool callback_after_stop = false;
    bool clock_stands = false;       // no callback at all
    bool negative_increment = false; // once
    bool pulls_audio = true;
    int block_ms = 10;        // of the clock and of audio
    int block_wait_us = 1000; // real time that a block takes
    int push_blocks = 0;      // that the running clock moves on by while a push lasts
    std::function<void(test_picture const&)> on_push;
    std::function<void(float const* const* channels, unsigned channel_count, unsigned samples, PrTime time)> on_audio;
};

struct test_record
{
    std::mutex mutex;
    std::vector<std::string> calls; // in order, pushes left out
    std::vector<tmPlaybackClock> clocks;
    std::vector<tmInstance> instances;
    std::vector<prSuiteError> audio_errors;
    std::atomic<bool> entered = false; // a host thread is inside
    std::atomic<long> overlaps = 0;    // calls while another was inside
};

struct test_module
{
    test_behaviour behaviour;
    test_record record;
};

extern "C" test_module* quillo_test_module();
