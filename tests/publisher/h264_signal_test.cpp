// What stock elements read out of encoded pictures.
#include "publisher/h264_signal.h"

#include "publisher/encoder.h"
#include "publisher/picture_store.h"
#include "publisher/pipeline.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <semaphore>

namespace quillo::publisher {
namespace {

picture_format const ntsc{320, 176, fill::uyvy, {30000, 1001}, {10, 11}, false};

// The first access unit of an encoder.
buffer_ptr encoded(encoder_choice const& choice, picture_format const& format)
{
    buffer_ptr unit;
    std::binary_semaphore done{0};
    pipeline encoding{encoding_pipeline(choice, format), [&](GstSample* sample) {
                          if (unit)
                              return;
                          unit = retain(gst_sample_get_buffer(sample));
                          done.release();
                      }};
    picture_store store;
    store.set_format(format);
    encoding.push(restamped(store.black().get(), 0).get());
    if (!done.try_acquire_for(std::chrono::seconds{5}))
        throw std::runtime_error{"nothing encoded"};
    return unit;
}

// The caps with which a decoder puts out the picture.
GstVideoInfo decoded(GstBuffer* unit)
{
    GstVideoInfo info{};
    std::binary_semaphore done{0};
    pipeline decoding{"appsrc name=in format=time caps=\"video/x-h264,stream-format=byte-stream,alignment=au\" "
                      "! h264parse ! avdec_h264 ! appsink name=out sync=false",
                      [&](GstSample* sample) {
                          gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
                          done.release();
                      }};
    decoding.push(unit);
    gst_element_send_event(decoding.in(), gst_event_new_eos());
    if (!done.try_acquire_for(std::chrono::seconds{5}))
        throw std::runtime_error{"nothing decoded"};
    return info;
}

class encoders : public ::testing::TestWithParam<char const*>
{
};

TEST_P(encoders, pictures_carry_colour_rate_and_aspect)
{
    gst_init(nullptr, nullptr);
    auto const choice = choose_encoder(GetParam());
    if (!choice)
        GTEST_SKIP() << GetParam() << " is not here";
    auto const unit = with_signal(encoded(*choice, ntsc).get(), ntsc);
    auto const info = decoded(unit.get());
    EXPECT_EQ(info.colorimetry.matrix, GST_VIDEO_COLOR_MATRIX_BT709);
    EXPECT_EQ(info.colorimetry.range, GST_VIDEO_COLOR_RANGE_16_235);
    EXPECT_EQ(info.colorimetry.primaries, GST_VIDEO_COLOR_PRIMARIES_BT709);
    EXPECT_EQ(info.colorimetry.transfer, GST_VIDEO_TRANSFER_BT709);
    EXPECT_EQ(info.par_n, 10);
    EXPECT_EQ(info.par_d, 11);
    EXPECT_EQ(info.fps_n, 30000);
    EXPECT_EQ(info.fps_d, 1001);
    EXPECT_EQ(info.width, 320);
    EXPECT_EQ(info.height, 176);
}

INSTANTIATE_TEST_SUITE_P(each, encoders, ::testing::Values("openh264enc", "x264enc"));

// Baseline profile, level 3.0, 320x176, one reference, no signal; written down bit by bit.
std::vector<unsigned char> const plain_sps{0x67, 0x42, 0xC0, 0x1E, 0xDA, 0x05, 0x05, 0xE4};

TEST(h264_signal, a_set_that_says_it_all_stays_as_it_is)
{
    auto const once = with_signal(plain_sps, ntsc);
    EXPECT_NE(once, plain_sps);
    EXPECT_EQ(with_signal(once, ntsc), once);
}

TEST(h264_signal, rubbish_comes_back_as_it_was_or_as_something_bounded)
{
    std::mt19937 random{7};
    for (int round = 0; round < 2000; ++round) {
        std::vector<unsigned char> rubbish(1 + random() % 40);
        for (auto& byte : rubbish)
            byte = static_cast<unsigned char>(random() % 4 ? random() : 0);
        EXPECT_LE(with_signal(rubbish, ntsc).size(), rubbish.size() * 2 + 64);
        gst_init(nullptr, nullptr);
        auto const buffer = adopt<buffer_ptr>(gst_buffer_new_memdup(rubbish.data(), rubbish.size()));
        EXPECT_LE(gst_buffer_get_size(with_signal(buffer.get(), ntsc).get()), rubbish.size() * 40 + 64);
    }
}

TEST(h264_signal, units_without_parameter_sets_stay_as_they_are)
{
    gst_init(nullptr, nullptr);
    std::vector<unsigned char> const unit{0, 0, 0, 1, 0x09, 0x10, 0, 0, 1, 0x65, 0x88, 0, 0, 1, 0x67, 0x42};
    auto const buffer = adopt<buffer_ptr>(gst_buffer_new_memdup(unit.data(), unit.size()));
    auto const same = with_signal(buffer.get(), ntsc);
    std::vector<unsigned char> out(gst_buffer_get_size(same.get()));
    gst_buffer_extract(same.get(), 0, out.data(), out.size());
    EXPECT_EQ(out, unit);
}

} // namespace
} // namespace quillo::publisher
