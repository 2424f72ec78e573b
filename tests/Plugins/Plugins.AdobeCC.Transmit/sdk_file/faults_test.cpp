// The writing functions against a file system that misbehaves: the fork calls are the test's own here, and every call
// is kept.
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"
#include "tools/sdk_file_host/exporter_host.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

struct file_system
{
    std::vector<std::string> calls;
    int writes_until_fault = 1 << 30;
    ByteCount short_by = 0;
    OSErr error = noErr;
};

file_system* fs = nullptr;

std::string call(char const* name, UInt16 mode, SInt64 offset, ByteCount count = 0)
{
    return std::string(name) + ' ' + std::to_string(mode) + ' ' + std::to_string(offset) + ' ' + std::to_string(count);
}

} // namespace

OSErr FSWriteFork(FSIORefNum, UInt16 mode, SInt64 offset, ByteCount count, void const*, ByteCount* actual)
{
    fs->calls.push_back(call("write", mode, offset, count));
    bool const fault = --fs->writes_until_fault < 0;
    *actual = fault ? count - fs->short_by : count;
    return fault ? fs->error : static_cast<OSErr>(noErr);
}

OSErr FSReadFork(FSIORefNum, UInt16 mode, SInt64 offset, ByteCount count, void*, ByteCount*)
{
    fs->calls.push_back(call("read", mode, offset, count));
    return fs->error;
}

OSErr FSSetForkPosition(FSIORefNum, UInt16 mode, SInt64 offset)
{
    fs->calls.push_back(call("seek", mode, offset));
    return noErr;
}

namespace {

using namespace quillo::sdk_file;
using testing::ElementsAre;

class Faults : public testing::Test, public export_source
{
  protected:
    Faults() { fs = &system_; }
    ~Faults() override { fs = nullptr; }

    prSuiteError render(csSDK_int64, SequenceRender_ParamsRec const& request, host_picture& picture) override
    {
        picture.format = PrPixelFormat_BGRA_4444_8u;
        picture.row_bytes = request.inWidth * 4;
        picture.pixels.resize(static_cast<std::size_t>(request.inWidth * request.inHeight * 4));
        return render_result_;
    }

    prSuiteError audio(PrAudioSample, csSDK_uint32, float**) override { return suiteError_NoError; }

    export_settings settings(csSDK_int32 channel_type = 2) const
    {
        export_settings s;
        s.width = 4;
        s.height = 2;
        s.ticks_per_frame = 10160640000;
        s.duration = s.ticks_per_frame; // 1920 samples at 48000 Hz
        s.most_samples = 1000;
        s.channel_type = channel_type;
        return s;
    }

    file_system system_;
    prSuiteError render_result_ = suiteError_NoError;
};

TEST_F(Faults, HeaderIsWrittenAtTheBeginning)
{
    exporter_host host(settings(), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(WriteSDK_FileHeader(nullptr, &record, 0), 0);
    EXPECT_THAT(system_.calls, ElementsAre("seek 1 0 0", "write 0 0 602"));
}

TEST_F(Faults, AWriteThatComesUpShortIsFour)
{
    system_.writes_until_fault = 0;
    system_.short_by = 1;
    csSDK_int32 count = 10;
    EXPECT_EQ(prWriteFile(nullptr, "0123456789", &count), 4);
    EXPECT_EQ(count, 9);

    exporter_host host(settings(), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(WriteSDK_FileHeader(nullptr, &record, 0), 4);
    EXPECT_EQ(RenderAndWriteVideoFrame(0, &record), 4);
    EXPECT_EQ(RenderAndWriteAllAudio(&record, settings().duration), 4);
    EXPECT_EQ(host.counts().frames_disposed, 1);
    EXPECT_EQ(host.counts().audio_renderers_open, 0);
}

TEST_F(Faults, AnErrorOfTheSystemComesBeforeTheCount)
{
    system_.writes_until_fault = 0;
    system_.short_by = 3;
    system_.error = -34;
    csSDK_int32 count = 10;
    EXPECT_EQ(prWriteFile(nullptr, "0123456789", &count), -34);
    EXPECT_EQ(count, 7);
}

TEST_F(Faults, NothingIsWrittenBehindAFailedWrite)
{
    system_.writes_until_fault = 0;
    system_.error = -36;
    exporter_host host(settings(), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(RenderAndWriteVideoFrame(0, &record), -36);
    EXPECT_THAT(system_.calls, ElementsAre("write 0 0 32")); // no end mark
}

TEST_F(Faults, AFrameIsItsPixelsAndTheEndMark)
{
    exporter_host host(settings(), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(RenderAndWriteVideoFrame(0, &record), 0);
    EXPECT_THAT(system_.calls, ElementsAre("write 0 0 32", "write 0 0 4"));
}

TEST_F(Faults, ARenderResultIsGivenBackThoughTheFrameIsWritten)
{
    render_result_ = 0x00030002; // done, with a frame
    exporter_host host(settings(), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(RenderAndWriteVideoFrame(0, &record), 0x00030002);
    EXPECT_THAT(system_.calls, ElementsAre("write 0 0 32", "write 0 0 4"));
}

TEST_F(Faults, SoundMovesFromChannelToChannelAndBack)
{
    exporter_host host(settings(3), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(RenderAndWriteAllAudio(&record, settings().duration), 0);
    // Chunks of 1000 and 920 of 1920 samples: forward by the rest of the channel, back by five channels.
    std::vector<std::string> expected;
    for (auto const& [chunk, forward] : {std::pair{4000, "3680"}, std::pair{3680, "4000"}})
        for (int channel = 0; channel < 6; ++channel) {
            expected.push_back("write 0 0 " + std::to_string(chunk));
            expected.push_back(std::string("seek 3 ") + (channel < 5 ? forward : "-38400") + " 0");
        }
    EXPECT_EQ(system_.calls, expected);
}

TEST_F(Faults, MonoSoundMovesByNothing)
{
    exporter_host host(settings(1), *this, nullptr);
    exDoExportRec record = host.record();
    EXPECT_EQ(RenderAndWriteAllAudio(&record, settings().duration), 0);
    EXPECT_THAT(system_.calls, ElementsAre("write 0 0 4000", "seek 3 0 0", "write 0 0 3680", "seek 3 0 0"));
}

TEST_F(Faults, ReadsGoWhereTheFrameIsAndAnErrorIsTwo)
{
    char buffer[8];
    EXPECT_EQ(ReadSDK_File(nullptr, 8, 3, buffer), 0);
    system_.error = -36;
    EXPECT_EQ(ReadSDK_File(nullptr, 8, 0, buffer), 2);
    EXPECT_THAT(system_.calls, ElementsAre("read 1 638 8", "read 1 602 8")); // 602 + 3 x 12
}

TEST_F(Faults, SoundIsReadChannelByChannel)
{
    float samples[4];
    float* buffers[] = {samples, samples, samples};
    EXPECT_EQ(readAudioToBuffer(4, 100, 3, nullptr, buffers), 0);
    EXPECT_THAT(system_.calls, ElementsAre("read 0 0 16", "seek 3 384 0", "read 0 0 16", "seek 3 384 0", "read 0 0 16",
                                           "seek 3 384 0"));
    system_.error = -39;
    EXPECT_EQ(readAudioToBuffer(4, 100, 3, nullptr, buffers), 2);
}

} // namespace
