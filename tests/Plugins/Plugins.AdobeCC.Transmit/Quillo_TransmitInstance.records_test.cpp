// The instance by itself: what its copies of the host's records hold, seen by running the thread's body on this thread.
#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::ElementsAre;

class Records : public TransmitTest
{
  protected:
    Records()
    {
        create_instance();
        activate(true, false);
        log.clear();
    }

    Quillo_TransmitInstance& itself() { return *static_cast<Quillo_TransmitInstance*>(instance_data()); }
};

TEST_F(Records, AStopZeroesThem)
{
    sender.hold_audio_after(0);
    start_clock();
    ASSERT_TRUE(log.wait_for("Quillolib_send_send_audio"));
    run_blocked([&] { stop_clock(); }, [&] { sender.let_audio_run(); });
    log.clear();
    itself().ThreadProc(); // the stop still stands
    EXPECT_THAT(log.lines(),
                ElementsAre("audio 2nd(0, 0, {0, 0, zeros})", "audio 3rd(0, {0, 0, 0, 0}, 0, 0)", "audio 9th(0)"));
}

TEST_F(Records, TheyStayWhenTheThreadEndsByItself)
{
    // The thread ends by itself, the records stay until the stop.
    host.set_up_result = 1;
    start_clock();
    ASSERT_TRUE(log.wait_for("audio 2nd"));
    log.clear();
    itself().ThreadProc();
    EXPECT_THAT(log.lines(), ElementsAre("audio 2nd(42, 0, {48000, 480, zeros})"));
    stop_clock();
    stop_clock();
    log.clear();
    itself().ThreadProc();
    EXPECT_THAT(log.lines(), ElementsAre("audio 2nd(0, 0, {0, 0, zeros})"));
}

} // namespace

} // namespace quillo::test
