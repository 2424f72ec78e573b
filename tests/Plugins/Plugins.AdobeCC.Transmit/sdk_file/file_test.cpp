// Whole files: written by the exporter's functions through a host, checked with a reader of its own, read back by the
// importer's.
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/audio.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/core_services.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/pixels.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/video.h"
#include "tests/Plugins/Plugins.AdobeCC.Transmit/sdk_file/plain_reader.h"
#include "tools/sdk_file_host/exporter_host.h"
#include "tools/sdk_file_host/importer_host.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <optional>

namespace {

using namespace quillo::sdk_file;

constexpr PrTime ticks_25 = 10160640000;

// A file in the temporary folder, removed when the test ends.
class temporary_file
{
  public:
    temporary_file() : descriptor_(mkstemp(path_.data())) {}
    ~temporary_file()
    {
        close(descriptor_);
        unlink(path_.c_str());
    }
    temporary_file(temporary_file const&) = delete;
    temporary_file& operator=(temporary_file const&) = delete;

    int descriptor() const { return descriptor_; }
    imFileRef ref() const { return file_of(descriptor_); }
    std::string const& path() const { return path_; }
    void fill(std::string const& bytes) const
    {
        ASSERT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        lseek(descriptor_, 0, SEEK_SET);
    }
    std::int64_t mark() const { return lseek(descriptor_, 0, SEEK_CUR); }

  private:
    std::string path_ = testing::TempDir() + "sdk_file_XXXXXX";
    int descriptor_;
};

// Pictures and sound that can be told apart by frame, row, pixel, channel and sample.
class test_source : public export_source
{
  public:
    csSDK_int32 padding = 0;                           // bytes behind each row; negative: rows too short
    PrPixelFormat format = PrPixelFormat_BGRA_4444_8u; // what the host renders
    std::optional<csSDK_int64> abort_at;
    std::vector<PrPixelFormat> requested;
    SequenceRender_ParamsRec last{};

    static unsigned char byte(csSDK_int64 frame, csSDK_int32 row, csSDK_int32 i)
    {
        return static_cast<unsigned char>(frame * 31 + row * 7 + i);
    }
    static float sample(csSDK_int32 channel, PrAudioSample i) { return static_cast<float>(channel * 1000000 + i); }

    prSuiteError render(csSDK_int64 frame, SequenceRender_ParamsRec const& request, host_picture& picture) override
    {
        last = request;
        requested.assign(request.inRequestedPixelFormatArray,
                         request.inRequestedPixelFormatArray + request.inRequestedPixelFormatArrayCount);
        if (abort_at == frame)
            return static_cast<prSuiteError>(suiteError_CompilerCompileAbort);
        csSDK_int32 const row = GetPixelFormatSize(format) * request.inWidth;
        picture.format = format;
        picture.row_bytes = row + padding;
        picture.pixels.assign(static_cast<std::size_t>(row + std::abs(padding)) * request.inHeight, '\x77');
        for (csSDK_int32 y = 0; y < request.inHeight && padding >= 0; ++y)
            for (csSDK_int32 i = 0; i < row; ++i) {
                char* const to = &picture.pixels[static_cast<std::size_t>(y) * picture.row_bytes + i];
                if (format == PrPixelFormat_BGRA_4444_8u)
                    *to = static_cast<char>(byte(frame, y, i));
                else if (i % 4 == 0) {
                    float const value = static_cast<float>(byte(frame, y, i)) / 300.0f - 0.3f;
                    std::memcpy(to, &value, 4);
                }
            }
        return suiteError_NoError;
    }

    prSuiteError audio(PrAudioSample first, csSDK_uint32 count, float** channels) override
    {
        for (csSDK_int32 channel = 0; channel < channel_count; ++channel)
            for (csSDK_uint32 i = 0; i < count; ++i)
                channels[channel][i] = sample(channel, first + i);
        return audio_result;
    }

    csSDK_int32 channel_count = 2;
    prSuiteError audio_result = 0;
};

export_settings small_export(csSDK_int32 frames = 5)
{
    export_settings s;
    s.width = 6;
    s.height = 4;
    s.ticks_per_frame = ticks_25;
    s.field_type = prFieldsUpperFirst;
    s.pixel_aspect = {10, 11};
    s.most_samples = 700;
    s.duration = frames * ticks_25;
    return s;
}

std::string bytes_of_frame(csSDK_int64 frame)
{
    std::string bytes;
    for (csSDK_int32 y = 0; y < 4; ++y)
        for (csSDK_int32 i = 0; i < 24; ++i)
            bytes += static_cast<char>(test_source::byte(frame, y, i));
    return bytes;
}

TEST(SdkFile, EveryHeaderByteOfAFullExport)
{
    temporary_file file;
    test_source source;
    exporter_host host(small_export(), source, file.ref());
    ASSERT_EQ(host.run(), 0);

    plain::file const written(file.path());
    EXPECT_EQ(written.text(0, 8), "PREMIERE");
    EXPECT_EQ(written.text(8, 8), " SDK_FIL");
    EXPECT_EQ(written.at<std::uint16_t>(16), 0x2045);
    EXPECT_EQ(written.int32(18), 5);
    EXPECT_EQ(written.int32(22), 1);
    EXPECT_EQ(written.int32(26), 0x5241575F);
    EXPECT_EQ(written.int32(30), 1);
    EXPECT_EQ(written.int32(34), 0x52415720);
    EXPECT_EQ(written.int32(38), 0);
    EXPECT_EQ(written.int32(42), 32);
    EXPECT_EQ(written.int32(46), 6);
    EXPECT_EQ(written.int32(50), 4);
    EXPECT_EQ(written.int32(54), 5);
    EXPECT_EQ(written.int64(58), 9600); // 0.2 s at 48000 Hz
    EXPECT_EQ(written.int32(66), 2);
    EXPECT_EQ(written.int64(70), ticks_25);
    EXPECT_EQ(written.at<double>(78), 48000.0);
    EXPECT_EQ(written.int32(86), 1);
    EXPECT_EQ(written.int32(90), 10);
    EXPECT_EQ(written.int32(94), 11);
    EXPECT_EQ(written.text(98, 504), std::string(504, '\0'));
}

TEST(SdkFile, FramesAndSoundLieWhereTheFormulasSay)
{
    temporary_file file;
    test_source source;
    exporter_host host(small_export(), source, file.ref());
    ASSERT_EQ(host.run(), 0);

    plain::file const written(file.path());
    for (std::size_t frame = 0; frame < 5; ++frame) {
        EXPECT_EQ(written.text(602 + frame * (96 + 4), 96), bytes_of_frame(static_cast<csSDK_int64>(frame)));
        EXPECT_EQ(written.text(602 + frame * (96 + 4) + 96, 4), "++++");
    }
    std::size_t const audio = 602 + 5 * (6 * 4 * 4 + 4);
    ASSERT_EQ(written.bytes.size(), audio + 2 * 9600 * 4);
    for (std::size_t i = 0; i < 9600; ++i) {
        ASSERT_EQ(written.at<float>(audio + i * 4), test_source::sample(0, static_cast<PrAudioSample>(i)));
        ASSERT_EQ(written.at<float>(audio + (9600 + i) * 4), test_source::sample(1, static_cast<PrAudioSample>(i)));
    }
    EXPECT_EQ(host.counts().frames_given, 5);
    EXPECT_EQ(host.counts().frames_disposed, 5);
    EXPECT_EQ(host.counts().audio_renderers_open, 0);
}

TEST(SdkFile, TheHostIsAskedForTheSequencesPicture)
{
    temporary_file file;
    test_source source;
    exporter_host host(small_export(1), source, file.ref());
    ASSERT_EQ(host.run(), 0);
    EXPECT_EQ(source.requested, std::vector{PrPixelFormat_BGRA_4444_8u});
    EXPECT_EQ(source.last.inWidth, 6);
    EXPECT_EQ(source.last.inHeight, 4);
    EXPECT_EQ(source.last.inPixelAspectRatioNumerator, 10);
    EXPECT_EQ(source.last.inPixelAspectRatioDenominator, 11);
    EXPECT_EQ(source.last.inFieldType, prFieldsUpperFirst);
}

TEST(SdkFile, WhatWasWrittenIsReadBack)
{
    temporary_file file;
    test_source source;
    exporter_host exporter(small_export(), source, file.ref());
    ASSERT_EQ(exporter.run(), 0);

    importer_host importer(file.descriptor());
    for (csSDK_int64 frame : {4, 0, 3, 1, 2}) {
        auto const pixels = importer.frame(frame);
        EXPECT_EQ(std::string(pixels.data(), pixels.size()), bytes_of_frame(frame));
    }
    EXPECT_THROW(importer.frame(5), std::out_of_range);
    EXPECT_THROW(importer.frame(-1), std::out_of_range);

    auto const middle = importer.audio(4000, 1000);
    ASSERT_EQ(middle.size(), 2u);
    for (std::size_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(middle[0][i], test_source::sample(0, static_cast<PrAudioSample>(4000 + i)));
        ASSERT_EQ(middle[1][i], test_source::sample(1, static_cast<PrAudioSample>(4000 + i)));
    }
    EXPECT_EQ(importer.audio(9000, 1000)[1].size(), 600u); // cut at the total
    EXPECT_EQ(importer.audio(-1, 1000)[1].size(), 0u);     // goes on behind the request before: the end
}

TEST(SdkFile, PaddedRowsAreWrittenTight)
{
    temporary_file file;
    test_source source;
    source.padding = 40;
    exporter_host host(small_export(), source, file.ref());
    ASSERT_EQ(host.run(), 0);
    plain::file const written(file.path());
    EXPECT_EQ(written.text(602 + 3 * 100, 100), bytes_of_frame(3) + "++++");
}

TEST(SdkFile, RowsTooShortForThePictureAreARenderFailureAndNothingIsWritten)
{
    temporary_file file;
    test_source source;
    source.padding = -4;
    exporter_host host(small_export(), source, file.ref());
    EXPECT_EQ(host.run(), static_cast<csSDK_int32>(suiteError_Fail));
    EXPECT_EQ(plain::file(file.path()).bytes.size(), 602u);
    EXPECT_EQ(host.counts().frames_given, 1);
    EXPECT_EQ(host.counts().frames_disposed, 1);
}

TEST(SdkFile, AbortAtFrameThreeEndsTheExportBehindTheThirdFrame)
{
    temporary_file file;
    test_source source;
    source.abort_at = 3;
    exporter_host host(small_export(), source, file.ref());
    EXPECT_EQ(host.run(), 0x30001);
    EXPECT_EQ(plain::file(file.path()).bytes.size(), 602u + 3 * 100);
    EXPECT_EQ(host.counts().frames_disposed, host.counts().frames_given);
}

csSDK_uint32 v410(double v, double u, double y)
{
    auto const ten = [](double value, double high) {
        return static_cast<csSDK_uint32>(std::min(std::max(value, 64.0), high));
    };
    return (ten(u * 896 + 512.5, 960) << 22) + (ten(y * 876 + 64.5, 940) << 12) + (ten(v * 896 + 512.5, 960) << 2);
}

int difference(csSDK_uint32 a, csSDK_uint32 b)
{
    int most = 0;
    for (int bit : {2, 12, 22})
        most = std::max(most, std::abs(static_cast<int>(a >> bit & 0x3FF) - static_cast<int>(b >> bit & 0x3FF)));
    return most;
}

TEST(SdkFile, TenBitFramesFromFloatPictures)
{
    temporary_file file;
    test_source source;
    source.format = PrPixelFormat_VUYA_4444_32f;
    source.padding = 8;
    export_settings settings = small_export(2);
    settings.codec = SDK_Codec10yu;
    exporter_host host(settings, source, file.ref());
    ASSERT_EQ(host.run(), 0);
    EXPECT_EQ(source.requested, (std::vector{PrPixelFormat_VUYA_4444_32f, PrPixelFormat_BGRA_4444_8u}));

    plain::file const written(file.path());
    EXPECT_EQ(written.int32(34), 0x31307975);
    EXPECT_EQ(written.int32(42), 24);
    for (csSDK_int32 y = 0; y < 4; ++y)
        for (csSDK_int32 x = 0; x < 6; ++x) {
            auto const value = [&](int c) {
                return static_cast<float>(test_source::byte(1, y, x * 16 + c * 4)) / 300.0f - 0.3f;
            };
            auto const word = written.at<csSDK_uint32>(602 + 100 + static_cast<std::size_t>(y * 6 + x) * 4);
            ASSERT_LE(difference(word, v410(value(0), value(1), value(2))), 1) << x << ' ' << y;
        }
    EXPECT_EQ(written.text(602 + 100 + 96, 4), "++++");
}

TEST(SdkFile, TenBitFramesFromEightBitPictures)
{
    temporary_file file;
    test_source source;
    export_settings settings = small_export(1);
    settings.codec = SDK_Codec10yu;
    exporter_host host(settings, source, file.ref());
    ASSERT_EQ(host.run(), 0);
    plain::file const written(file.path());
    for (csSDK_int32 y = 0; y < 4; ++y)
        for (csSDK_int32 x = 0; x < 6; ++x) {
            double const b = test_source::byte(0, y, x * 4) / 255.0, g = test_source::byte(0, y, x * 4 + 1) / 255.0,
                         r = test_source::byte(0, y, x * 4 + 2) / 255.0;
            auto const word = written.at<csSDK_uint32>(602 + static_cast<std::size_t>(y * 6 + x) * 4);
            ASSERT_LE(difference(word, v410(0.5 * r - 0.418688 * g - 0.081312 * b,
                                            -0.168736 * r - 0.331264 * g + 0.5 * b, 0.299 * r + 0.587 * g + 0.114 * b)),
                      1);
        }
}

TEST(SdkFile, RleFramesAreTheEndMarkAlone)
{
    temporary_file file;
    test_source source;
    export_settings settings = small_export();
    settings.codec = SDK_CodecRLE;
    settings.audio = false;
    exporter_host host(settings, source, file.ref());
    ASSERT_EQ(host.run(), 0);
    plain::file const written(file.path());
    EXPECT_EQ(written.bytes.size(), 602u + 5 * 4);
    EXPECT_EQ(written.text(602, 20), "++++++++++++++++++++");
    EXPECT_EQ(written.int32(34), 0x524C455F);
    EXPECT_EQ(written.int32(42), 0); // no bit depth
    EXPECT_EQ(host.counts().frames_disposed, 5);
}

TEST(SdkFile, AudioOnlyLeavesTheVideoFieldsUnset)
{
    temporary_file file;
    test_source source;
    export_settings settings = small_export();
    settings.video = false;
    settings.width = settings.height = 0;
    exporter_host host(settings, source, file.ref());
    ASSERT_EQ(host.run(), 0);
    plain::file const written(file.path());
    EXPECT_EQ(written.int32(22), 1);
    EXPECT_EQ(written.text(30, 28), std::string(28, '\0')); // 30..57
    EXPECT_EQ(written.int64(58), 9600);
    EXPECT_EQ(written.int64(70), 0);
    EXPECT_EQ(written.text(86, 12), std::string(12, '\0'));
    EXPECT_EQ(written.at<float>(602 + 9600 * 4 + 4), test_source::sample(1, 1)); // straight behind the header
}

TEST(SdkFile, VideoOnlyLeavesTheAudioFieldsUnset)
{
    temporary_file file;
    test_source source;
    export_settings settings = small_export();
    settings.audio = false;
    exporter_host host(settings, source, file.ref());
    ASSERT_EQ(host.run(), 0);
    plain::file const written(file.path());
    EXPECT_EQ(written.text(22, 8), std::string(8, '\0'));
    EXPECT_EQ(written.text(58, 12), std::string(12, '\0'));
    EXPECT_EQ(written.text(78, 8), std::string(8, '\0'));
    EXPECT_EQ(written.bytes.size(), 602u + 500);
}

TEST(SdkFile, APictureWithoutSizeIsRefusedAndNothingWritten)
{
    for (auto const& [width, height] : {std::pair{0, 4}, std::pair{6, 0}}) {
        temporary_file file;
        test_source source;
        export_settings settings = small_export();
        settings.width = width;
        settings.height = height;
        exporter_host host(settings, source, file.ref());
        EXPECT_EQ(host.run(), 6);
        EXPECT_TRUE(plain::file(file.path()).bytes.empty());
    }
}

TEST(SdkFile, MonoAndSixChannelSound)
{
    for (auto const& [type, channels] : {std::pair{1, 1}, std::pair{3, 6}}) {
        temporary_file file;
        test_source source;
        source.channel_count = channels;
        export_settings settings = small_export();
        settings.video = false;
        settings.channel_type = type;
        exporter_host host(settings, source, file.ref());
        ASSERT_EQ(host.run(), 0);
        plain::file const written(file.path());
        EXPECT_EQ(written.int32(66), type);
        ASSERT_EQ(written.bytes.size(), 602u + 9600 * 4 * static_cast<std::size_t>(channels));
        for (int channel = 0; channel < channels; ++channel)
            for (std::size_t i : {0u, 699u, 700u, 9599u})
                EXPECT_EQ(written.at<float>(602 + (static_cast<std::size_t>(channel) * 9600 + i) * 4),
                          test_source::sample(channel, static_cast<PrAudioSample>(i)));
    }
}

TEST(SdkFile, ChannelTypes)
{
    EXPECT_EQ(GetNumberOfAudioChannels(1), 1);
    EXPECT_EQ(GetNumberOfAudioChannels(2), 2);
    EXPECT_EQ(GetNumberOfAudioChannels(3), 6);
    for (csSDK_int32 const other : {0, 4, -1, 6})
        EXPECT_EQ(GetNumberOfAudioChannels(other), -1);
}

TEST(SdkFile, AnErrorOfTheAudioSuiteEndsTheExport)
{
    temporary_file file;
    test_source source;
    source.audio_result = -77;
    exporter_host host(small_export(), source, file.ref());
    EXPECT_EQ(host.run(), -77);
    EXPECT_EQ(host.counts().audio_renderers_open, 0);
}

// The system lets a process write only so far, then a write comes up short and the next one fails.
class file_size_limit
{
  public:
    explicit file_size_limit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit const now{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &now);
    }
    ~file_size_limit()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    rlimit before_{};
    void (*handler_)(int) = nullptr;
};

TEST(SdkFile, AFullDiskIsTheSystemsError)
{
    temporary_file file;
    test_source source;
    exporter_host host(small_export(), source, file.ref());
    csSDK_int32 result = 0;
    {
        file_size_limit const limit(602 + 250);
        result = host.run();
    }
    EXPECT_EQ(result, dskFulErr);
    EXPECT_EQ(plain::file(file.path()).bytes.size(), 602u + 250);
    EXPECT_EQ(host.counts().frames_disposed, host.counts().frames_given);
}

TEST(WriteFile, GivesTheCountAndTheSystemsError)
{
    temporary_file file;
    csSDK_int32 count = 5;
    EXPECT_EQ(prWriteFile(file.ref(), "hello", &count), 0);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(file.mark(), 5);

    int const closed = dup(file.descriptor());
    close(closed);
    count = 5;
    EXPECT_EQ(prWriteFile(file_of(closed), "hello", &count), rfNumErr);
    EXPECT_EQ(count, 0);
}

// A pipe that takes only part: the call reports what arrived. A write of 0 bytes without an error is "too little".
TEST(ReadFile, AReadErrorIsTwo)
{
    temporary_file file;
    file.fill(std::string(602 + 99, 'x'));
    std::vector<char> frame(100);
    EXPECT_EQ(ReadSDK_File(file.ref(), 96, 0, frame.data()), 0);
    EXPECT_EQ(ReadSDK_File(file.ref(), 96, 1, frame.data()), 2);  // behind the end
    EXPECT_EQ(ReadSDK_File(file.ref(), 100, 0, frame.data()), 2); // cut short
    EXPECT_EQ(ReadSDK_File(file.ref(), 96, 0x7FFFFFFF, frame.data()), 2);
    EXPECT_EQ(ReadSDK_File(file_of(-1), 96, 0, frame.data()), 2);
}

TEST(AudioRequest, FromThePositionOrBehindTheOneBefore)
{
    PrAudioSample position = 100, start = 0, count = 0;
    imImportAudioRec7 request{};
    request.size = 50;
    request.position = 10;
    EXPECT_EQ(calculateAudioRequest(&request, 1000, &position, &start, &count), 10);
    EXPECT_EQ(std::tuple(start, count, position), std::tuple(10, 50, 60));
    request.position = -1;
    EXPECT_EQ(calculateAudioRequest(&request, 1000, &position, &start, &count), 60);
    EXPECT_EQ(std::tuple(start, count, position), std::tuple(60, 50, 110));
}

TEST(AudioRequest, CutAtTheTotal)
{
    PrAudioSample position = 0, start = 0, count = 0;
    imImportAudioRec7 request{};
    request.size = 50;
    request.position = 950;
    calculateAudioRequest(&request, 1000, &position, &start, &count);
    EXPECT_EQ(std::tuple(start, count, position), std::tuple(950, 50, 1000)); // just fits
    request.position = 951;
    calculateAudioRequest(&request, 1000, &position, &start, &count);
    EXPECT_EQ(std::tuple(start, count, position), std::tuple(951, 49, 1000));
    request.position = 1005;
    calculateAudioRequest(&request, 1000, &position, &start, &count);
    EXPECT_EQ(std::tuple(start, count, position), std::tuple(1005, -5, 1000));
}

TEST(AudioRead, ChannelsLieATotalApart)
{
    temporary_file file;
    std::vector<float> stored(30);
    for (std::size_t i = 0; i < stored.size(); ++i)
        stored[i] = static_cast<float>(i);
    file.fill(std::string(602, '\0') + std::string(reinterpret_cast<char const*>(stored.data()), stored.size() * 4));

    SDK_ImporterRec importer{};
    setPointerToAudioStart(&importer, 2, file.ref());
    EXPECT_EQ(file.mark(), 602 + 8);
    float a[3], b[3], c[3];
    float* buffers[] = {a, b, c};
    EXPECT_EQ(readAudioToBuffer(3, 10, 3, file.ref(), buffers), 0);
    EXPECT_EQ(std::tuple(a[0], a[2], b[0], b[2], c[0], c[2]), std::tuple(2.f, 4.f, 12.f, 14.f, 22.f, 24.f));
    setPointerToAudioStart(&importer, 8, file.ref());
    EXPECT_EQ(readAudioToBuffer(3, 10, 3, file.ref(), buffers), 2); // the last channel ends too early
}

TEST(AudioStart, BehindTheFramesOrTheHeader)
{
    SDK_FileHeader header{};
    EXPECT_EQ(SDK_AudioStart(header), 602);
    header.frameCount = 3;
    header.width = 10;
    header.height = 7;
    EXPECT_EQ(SDK_AudioStart(header), 602); // no video
    header.hasVideo = 1;
    EXPECT_EQ(SDK_AudioStart(header), 602 + 3 * (10 * 7 * 4 + 4));
    header.frameCount = 0;
    EXPECT_EQ(SDK_AudioStart(header), 602);
}

} // namespace
