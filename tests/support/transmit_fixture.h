// A host session with the module under test: loads it, starts it up, makes an instance, and takes all down in order.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>

#include "tests/support/fake_host/fake_host.h"
#include "tests/support/fake_host/fake_picture.h"
#include "tests/support/module_under_test.h"
#include "tests/support/recording_sender/call_log.h"
#include "tests/support/recording_sender/recording_sender.h"

namespace quillo::test {

class TransmitTest : public testing::Test
{
  protected:
    TransmitTest();
    ~TransmitTest() override;

    // A sequence of 1280 x 720, 25 frames a second, progressive, stereo at 48 kHz.
    static tmInstance a_sequence();
    // Plays from tick 300 in [100, 900), context "first".
    static tmPlaybackClock a_clock();

    // Startup; the record of the module and the plug-in info stay in the fixture.
    void start_up();
    // Startup if need be, and an instance. Empties the call log.
    void create_instance();

    tmResult activate(bool audio, bool video);
    tmResult start_clock();
    tmResult stop_clock();
    tmResult push(std::initializer_list<fake_picture*> pictures, PrTime time = 0);
    // What the plug-in keeps in the host's packed records, by value.
    void* plugin_data() const { return parms.ioPrivatePluginData; }
    void* instance_data() const { return instance.ioPrivateInstanceData; }

    // Pushes one picture and returns what was sent.
    sent_video send(fake_picture& picture, PrTime time = 0);

    // Runs blocking on this thread, and then release on another as soon as this thread sleeps inside it.
    static void run_blocked(std::function<void()> const& blocking, std::function<void()> const& release);

    call_log& log = call_log::instance();
    recording_sender& sender = recording_sender::instance();
    fake_host host;
    std::unique_ptr<module_under_test> module;

    tmModule functions{};
    tmStdParms parms{};
    tmPluginInfo info{};
    tmInstance instance = a_sequence();
    tmPlaybackClock clock = a_clock();
};

} // namespace quillo::test
